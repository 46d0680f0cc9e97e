// TBstr beside the strings of 16-bit units of other libraries.

#if KEST_PEER_ICU
#include <unicode/unistr.h>
#endif
#if KEST_PEER_QT
#include <QString>
#endif

#include <string>

#include "kest/string.h"
#include "support/row.h"

namespace {

using KEST::TBstr;

const unsigned short* Units(const std::u16string& text) {
  return reinterpret_cast<const unsigned short*>(text.c_str());
}

// Letters with a hit each 24 units or so; none but the hits holds a 'q'.
std::u16string TextWithHits(size_t length, size_t hits, const std::u16string& hit) {
  std::u16string text(length, u' ');
  for (size_t at = 0; at < length; ++at) text[at] = static_cast<char16_t>(u'a' + at * 7 % 15);
  for (size_t i = 0; i < hits; ++i) text.replace(i * length / hits, hit.size(), hit);
  return text;
}

// work(text, state) for a text of the given length.
template <typename Work>
void TextRow(const std::string& row, const std::string& who, size_t length, Work work) {
  const std::u16string text = TextWithHits(length, 0, u"");
  Row(row, who, [text, work](benchmark::State& state) {
    for (auto _ : state) work(text);
  });
}

void RegisterBuild() {
  const std::string row = "build and destroy 16";
  TextRow(row, "kest", 16, [](const std::u16string& text) {
    TBstr built(Units(text), 16);
    benchmark::DoNotOptimize(built);
  });
  TextRow(row, "libstdc++", 16, [](const std::u16string& text) {
    std::u16string built(text.c_str(), 16);
    benchmark::DoNotOptimize(built);
  });
#if KEST_PEER_ICU
  TextRow(row, "icu", 16, [](const std::u16string& text) {
    icu::UnicodeString built(text.c_str(), 16);
    benchmark::DoNotOptimize(built);
  });
#endif
#if KEST_PEER_QT
  TextRow(row, "qt", 16, [](const std::u16string& text) {
    QString built(reinterpret_cast<const QChar*>(text.c_str()), 16);
    benchmark::DoNotOptimize(built);
  });
#endif
}

// A copy with units of its own; the others count references.
void RegisterCopy() {
  const std::string row = "copy 40";
  const std::u16string text = TextWithHits(40, 0, u"");
  const TBstr bstr(Units(text), 40);
  Row(row, "kest", [bstr](benchmark::State& state) {
    for (auto _ : state) {
      TBstr copy(bstr);
      benchmark::DoNotOptimize(copy);
    }
  });
  Row(row, "libstdc++", [text](benchmark::State& state) {
    for (auto _ : state) {
      std::u16string copy(text);
      benchmark::DoNotOptimize(copy);
    }
  });
}

// append(string) until there are 1000 units.
template <typename String, typename Append>
void AppendRow(const std::string& who, Append append) {
  Row("append 1 unit x 1000", who, [append](benchmark::State& state) {
    for (auto _ : state) {
      String grown;
      for (int i = 0; i < 1000; ++i) append(grown);
      benchmark::DoNotOptimize(grown);
    }
  });
}

void RegisterAppend() {
  AppendRow<TBstr>("kest", [](TBstr& grown) { grown.Append(u'x'); });
#if KEST_PEER_ICU
  AppendRow<icu::UnicodeString>("icu", [](icu::UnicodeString& grown) { grown.append(u'x'); });
#endif
#if KEST_PEER_QT
  AppendRow<QString>("qt", [](QString& grown) { grown.append(QChar(u'x')); });
#endif
}

// Copies the text and replaces each "quay" in the copy.
void RegisterReplace(const std::string& row, const std::u16string& to) {
  const std::u16string from = u"quay";
  const std::u16string text = TextWithHits(16384, 680, from);
  Row(row, "kest", [=](benchmark::State& state) {
    const TBstr source(Units(text));
    for (auto _ : state) {
      TBstr copy(source);
      benchmark::DoNotOptimize(copy.Replace(Units(from), Units(to)));
    }
  });
  Row(row, "libstdc++", [=](benchmark::State& state) {
    for (auto _ : state) {
      std::u16string result;
      size_t start = 0;
      for (size_t hit; (hit = text.find(from, start)) != text.npos; start = hit + from.size()) {
        result.append(text, start, hit - start).append(to);
      }
      result.append(text, start);
      benchmark::DoNotOptimize(result);
    }
  });
#if KEST_PEER_ICU
  Row(row, "icu", [=](benchmark::State& state) {
    const icu::UnicodeString source(text.c_str()), old(from.c_str()), fresh(to.c_str());
    for (auto _ : state) {
      icu::UnicodeString copy(source);
      benchmark::DoNotOptimize(copy.findAndReplace(old, fresh));
    }
  });
#endif
#if KEST_PEER_QT
  Row(row, "qt", [=](benchmark::State& state) {
    const QString source = QString::fromStdU16String(text);
    const QString old = QString::fromStdU16String(from), fresh = QString::fromStdU16String(to);
    for (auto _ : state) {
      QString copy(source);
      benchmark::DoNotOptimize(copy.replace(old, fresh));
    }
  });
#endif
}

void RegisterCase() {
  const std::string row = "to upper case 16384";
  const std::u16string text = TextWithHits(16384, 0, u"");
  Row(row, "kest", [text](benchmark::State& state) {
    const TBstr source(Units(text));
    for (auto _ : state) {
      TBstr copy(source);
      copy.MakeUpper();
      benchmark::DoNotOptimize(copy);
    }
  });
#if KEST_PEER_QT
  Row(row, "qt", [text](benchmark::State& state) {
    const QString source = QString::fromStdU16String(text);
    for (auto _ : state) benchmark::DoNotOptimize(source.toUpper());
  });
#endif
}

// Copies the text and replaces one unit by another.
void RegisterReplaceUnit() {
  const std::string row = "replace a unit in 16384";
  const std::u16string text = TextWithHits(16384, 680, u"q");
  Row(row, "kest", [text](benchmark::State& state) {
    const TBstr source(Units(text));
    for (auto _ : state) {
      TBstr copy(source);
      benchmark::DoNotOptimize(copy.Replace(u'q', u'x'));
    }
  });
  Row(row, "libstdc++", [text](benchmark::State& state) {
    for (auto _ : state) {
      std::u16string copy(text);
      std::replace(copy.begin(), copy.end(), u'q', u'x');
      benchmark::DoNotOptimize(copy);
    }
  });
#if KEST_PEER_QT
  Row(row, "qt", [text](benchmark::State& state) {
    const QString source = QString::fromStdU16String(text);
    for (auto _ : state) {
      QString copy(source);
      benchmark::DoNotOptimize(copy.replace(QChar(u'q'), QChar(u'x')));
    }
  });
#endif
}

void RegisterRemove() {
  const std::string row = "remove a unit from 16384";
  const std::u16string text = TextWithHits(16384, 680, u"q");
  Row(row, "kest", [text](benchmark::State& state) {
    const TBstr source(Units(text));
    for (auto _ : state) {
      TBstr copy(source);
      benchmark::DoNotOptimize(copy.Remove(u'q'));
    }
  });
  Row(row, "libstdc++", [text](benchmark::State& state) {
    for (auto _ : state) {
      std::u16string copy(text);
      copy.erase(std::remove(copy.begin(), copy.end(), u'q'), copy.end());
      benchmark::DoNotOptimize(copy);
    }
  });
#if KEST_PEER_QT
  Row(row, "qt", [text](benchmark::State& state) {
    const QString source = QString::fromStdU16String(text);
    for (auto _ : state) {
      QString copy(source);
      benchmark::DoNotOptimize(copy.remove(QChar(u'q')));
    }
  });
#endif
}

}  // namespace

void RegisterRows() {
  RegisterBuild();
  RegisterCopy();
  RegisterAppend();
  RegisterReplace("replace 680 hits in 16384", u"wharf");
  RegisterReplace("replace 680 hits in place in 16384", u"pier");
  RegisterReplaceUnit();
  RegisterRemove();
  RegisterCase();
}
