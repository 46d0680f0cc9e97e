// Text between UTF-8, 16-bit units and ISO 8859-1, beside the converters of other libraries. Where
// a peer has a call that fills a buffer, that is what is measured; Qt and GLib have results of
// their own making only, so that their allocation is part of the conversion.

#if KEST_PEER_QT
#include <QByteArray>
#include <QString>
#include <QStringView>
#endif
#if KEST_PEER_ICU
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#endif
#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_UNISTRING
#include <unistr.h>
#endif
#include <iconv.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kest/string.h"
#include "support/row.h"

namespace {

// One text as each of the libraries has it.
struct SText {
  std::u16string units;
  std::string utf8;
  std::string bytes;  // ISO 8859-1, only of texts that it holds

  const unsigned short* Units() const {
    return reinterpret_cast<const unsigned short*>(units.data());
  }
  int Length() const { return static_cast<int>(units.size()); }
};

SText TextOf(const std::u16string& units) {
  SText text = {units, std::string(units.size() * 3, '\0'), std::string(units.size(), '\0')};
  const int size = static_cast<int>(text.utf8.size());
  text.utf8.resize(
      static_cast<size_t>(KestStringToUtf8(text.Units(), text.Length(), text.utf8.data(), size)));
  KestUnicodeToMultibyte(text.Units(), text.Length(), text.bytes.data(), text.Length());
  return text;
}

// Words in an order that no branch predictor learns, up to exactly length units.
std::u16string Words(const std::vector<std::u16string>& words, size_t length) {
  std::u16string text;
  unsigned int random = 1;
  while (text.size() < length) {
    random = random * 1664525 + 1013904223;
    text += words[(random >> 16) % words.size()] + u' ';
  }
  return text.substr(0, length);
}

const std::vector<std::u16string> kEnglish = {u"the",   u"quick",     u"brown", u"fox,",
                                              u"jumps", u"over",      u"a",     u"lazy",
                                              u"dog.",  u"Somewhere", u"under", u"bridges"};
const std::vector<std::u16string> kFrench = {u"le",
                                             u"c\u0153ur",
                                             u"d\u00E9\u00E7u",
                                             u"mais",
                                             u"plut\u00F4t",
                                             u"na\u00EFf",
                                             u"Lou\u00FFs",
                                             u"r\u00EAva",
                                             u"de",
                                             u"crapa\u00FCter",
                                             u"en",
                                             u"cano\u00EB",
                                             u"au",
                                             u"del\u00E0",
                                             u"des",
                                             u"\u00EEles",
                                             u"pr\u00E8s",
                                             u"du",
                                             u"m\u00E4lstr\u00F6m"};
const std::vector<std::u16string> kCyrillic = {u"\u0441\u044A\u0435\u0448\u044C",
                                               u"\u0436\u0435",
                                               u"\u0435\u0449\u0451",
                                               u"\u044D\u0442\u0438\u0445",
                                               u"\u043C\u044F\u0433\u043A\u0438\u0445",
                                               u"\u0431\u0443\u043B\u043E\u043A,",
                                               u"\u0434\u0430",
                                               u"\u0432\u044B\u043F\u0435\u0439",
                                               u"\u0447\u0430\u044E."};
const std::vector<std::u16string> kChinese = {
    u"\u5929\u5730\u7384\u9EC4", u"\u5B87\u5B99\u6D2A\u8352", u"\u65E5\u6708\u76C8\u6603",
    u"\u8FB0\u5BBF\u5217\u5F20\u3002", u"\u5BD2\u6765\u6691\u5F80\uFF0C"};

std::vector<std::u16string> AllWords() {
  std::vector<std::u16string> all;
  for (const auto* words : {&kEnglish, &kFrench, &kCyrillic, &kChinese}) {
    all.insert(all.end(), words->begin(), words->end());
  }
  return all;
}

// Chinese is written without blanks.
std::u16string Chinese(size_t length) {
  std::u16string text = Words(kChinese, 2 * length);
  text.erase(std::remove(text.begin(), text.end(), u' '), text.end());
  return text.substr(0, length);
}

// Only what ISO 8859-1 holds.
std::u16string Latin1(size_t length) {
  std::u16string text = Words(kFrench, length);
  for (char16_t& unit : text) {
    if (unit > 0xFF) unit = u'\u00E6';
  }
  return text;
}

using Room = std::vector<unsigned short>;

using Texts = std::vector<SText>;

// Many texts of length units each: what branches a single short one takes is soon known by heart.
Texts Pieces(const std::u16string& text, size_t length) {
  Texts pieces;
  for (size_t at = 0; at < text.size(); at += length) {
    pieces.push_back(TextOf(text.substr(at, length)));
  }
  return pieces;
}

// convert(text, room): what is measured, with room for whatever comes out, for each text in turn.
template <typename Function>
void Register(const std::string& row, const char* who, const Texts& texts, Function convert) {
  Row(row, who, [texts, convert](benchmark::State& state) {
    Room room(texts[0].units.size() * 3 + 64);
    for (auto _ : state) {
      for (const SText& text : texts) {
        benchmark::ClobberMemory();
        convert(text, room);
      }
    }
  });
}

char16_t* Wide(Room& room) { return reinterpret_cast<char16_t*>(room.data()); }
char* Narrow(Room& room) { return reinterpret_cast<char*>(room.data()); }
int SizeOf(const Room& room) { return static_cast<int>(room.size()); }
int BytesOf(const std::string& text) { return static_cast<int>(text.size()); }

// A converter of the C library, opened once.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : converter(iconv_open(to, from)) {}
  void operator()(const void* from, size_t bytes, Room& room) const {
    char* in = const_cast<char*>(static_cast<const char*>(from));
    char* out = Narrow(room);
    size_t outBytes = 2 * room.size();
    iconv(converter, &in, &bytes, &out, &outBytes);
    benchmark::DoNotOptimize(out);
  }

 private:
  iconv_t converter;
};

void RegisterFromUtf8(const std::string& row, const Texts& texts) {
  Register(row, "kest", texts, [](const SText& t, Room& room) {
    benchmark::DoNotOptimize(
        KestUtf8ToString(t.utf8.data(), BytesOf(t.utf8), room.data(), SizeOf(room)));
  });
#if KEST_PEER_QT
  Register(row, "qt", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(QString::fromUtf8(t.utf8.data(), BytesOf(t.utf8)).constData());
  });
#endif
#if KEST_PEER_ICU
  Register(row, "icu", texts, [](const SText& t, Room& room) {
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(
        u_strFromUTF8(Wide(room), SizeOf(room), nullptr, t.utf8.data(), BytesOf(t.utf8), &error));
  });
  Register(row, "icu lenient", texts, [](const SText& t, Room& room) {
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(u_strFromUTF8Lenient(Wide(room), SizeOf(room), nullptr, t.utf8.data(),
                                                  BytesOf(t.utf8), &error));
  });
#endif
#if KEST_PEER_GLIB
  Register(row, "glib", texts, [](const SText& t, Room&) {
    gunichar2* units = g_utf8_to_utf16(t.utf8.data(), BytesOf(t.utf8), nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(units);
    g_free(units);
  });
#endif
#if KEST_PEER_UNISTRING
  Register(row, "unistring", texts, [](const SText& t, Room& room) {
    size_t size = room.size();
    benchmark::DoNotOptimize(u8_to_u16(reinterpret_cast<const uint8_t*>(t.utf8.data()),
                                       t.utf8.size(), room.data(), &size));
  });
#endif
  Register(row, "glibc", texts, [convert = Iconv("UTF-16LE", "UTF-8")](const SText& t, Room& room) {
    convert(t.utf8.data(), t.utf8.size(), room);
  });
}

void RegisterToUtf8(const std::string& row, const Texts& texts) {
  Register(row, "kest", texts, [](const SText& t, Room& room) {
    benchmark::DoNotOptimize(
        KestStringToUtf8(t.Units(), t.Length(), Narrow(room), 2 * SizeOf(room)));
  });
#if KEST_PEER_QT
  Register(row, "qt", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(QStringView(t.units.data(), t.Length()).toUtf8().constData());
  });
#endif
#if KEST_PEER_ICU
  Register(row, "icu", texts, [](const SText& t, Room& room) {
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(
        u_strToUTF8(Narrow(room), 2 * SizeOf(room), nullptr, t.units.data(), t.Length(), &error));
  });
#endif
#if KEST_PEER_GLIB
  Register(row, "glib", texts, [](const SText& t, Room&) {
    char* bytes = g_utf16_to_utf8(t.Units(), t.Length(), nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(bytes);
    g_free(bytes);
  });
#endif
#if KEST_PEER_UNISTRING
  Register(row, "unistring", texts, [](const SText& t, Room& room) {
    size_t size = 2 * room.size();
    benchmark::DoNotOptimize(
        u16_to_u8(t.Units(), t.units.size(), reinterpret_cast<uint8_t*>(room.data()), &size));
  });
#endif
  Register(row, "glibc", texts, [convert = Iconv("UTF-8", "UTF-16LE")](const SText& t, Room& room) {
    convert(t.units.data(), 2 * t.units.size(), room);
  });
}

#if KEST_PEER_ICU
UConverter* Latin1Converter() {
  UErrorCode error = U_ZERO_ERROR;
  return ucnv_open("ISO-8859-1", &error);
}
#endif

void RegisterToBytes(const std::string& row, const Texts& texts) {
  Register(row, "kest", texts, [](const SText& t, Room& room) {
    benchmark::DoNotOptimize(
        KestUnicodeToMultibyte(t.Units(), t.Length(), Narrow(room), 2 * SizeOf(room)));
  });
#if KEST_PEER_QT
  Register(row, "qt", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(QStringView(t.units.data(), t.Length()).toLatin1().constData());
  });
#endif
#if KEST_PEER_ICU
  Register(row, "icu", texts, [converter = Latin1Converter()](const SText& t, Room& room) {
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(ucnv_fromUChars(converter, Narrow(room), 2 * SizeOf(room),
                                             t.units.data(), t.Length(), &error));
  });
#endif
  Register(row, "glibc", texts,
           [convert = Iconv("ISO-8859-1", "UTF-16LE")](const SText& t, Room& room) {
             convert(t.units.data(), 2 * t.units.size(), room);
           });
}

void RegisterFromBytes(const std::string& row, const Texts& texts) {
  Register(row, "kest", texts, [](const SText& t, Room& room) {
    benchmark::DoNotOptimize(
        KestMultibyteToUnicode(t.bytes.data(), BytesOf(t.bytes), room.data(), SizeOf(room)));
  });
#if KEST_PEER_QT
  Register(row, "qt", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(QString::fromLatin1(t.bytes.data(), BytesOf(t.bytes)).constData());
  });
#endif
#if KEST_PEER_ICU
  Register(row, "icu", texts, [converter = Latin1Converter()](const SText& t, Room& room) {
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(ucnv_toUChars(converter, Wide(room), SizeOf(room), t.bytes.data(),
                                           BytesOf(t.bytes), &error));
  });
#endif
  Register(row, "glibc", texts,
           [convert = Iconv("UTF-16LE", "ISO-8859-1")](const SText& t, Room& room) {
             convert(t.bytes.data(), t.bytes.size(), room);
           });
}

// The same into memory of the library's own making, as a call that takes wide text needs it.
void RegisterConvertBuffer(const std::string& row, const Texts& texts) {
  Register(row, "kest", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(KEST::TConvertBuffer(t.bytes.data(), BytesOf(t.bytes)).GetBuffer());
  });
#if KEST_PEER_QT
  Register(row, "qt", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(QString::fromLatin1(t.bytes.data(), BytesOf(t.bytes)).constData());
  });
#endif
}

// What there is beside the conversions: sizes and the choice of an encoding.
void RegisterScans(const Texts& texts) {
  const std::string size = "size in utf-8, mixed 4096";
  Register(size, "kest", texts, [](const SText& t, Room&) {
    benchmark::DoNotOptimize(KestStringUtf8ByteLen(t.Units()));
  });
#if KEST_PEER_ICU
  Register(size, "icu", texts, [](const SText& t, Room&) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t bytes = 0;
    u_strToUTF8(nullptr, 0, &bytes, t.units.data(), -1, &error);
    benchmark::DoNotOptimize(bytes);
  });
#endif
}

}  // namespace

void RegisterRows() {
  constexpr size_t kUnits = 4096;
  const struct {
    const char* name;
    SText text;
  } texts[] = {
      {"ascii 4096", TextOf(Words(kEnglish, kUnits))},
      {"french 4096", TextOf(Words(kFrench, kUnits))},
      {"cyrillic 4096", TextOf(Words(kCyrillic, kUnits))},
      {"cjk 4096", TextOf(Chinese(kUnits))},
      {"mixed 4096", TextOf(Words(AllWords(), kUnits))},
  };
  for (const auto& [name, text] : texts) {
    RegisterFromUtf8(std::string("from utf-8, ") + name, {text});
    RegisterToUtf8(std::string("to utf-8, ") + name, {text});
  }
  const Texts shortTexts = Pieces(Words(kFrench, 64 * 24), 24);
  RegisterFromUtf8("from utf-8, 64 of 24", shortTexts);
  RegisterToUtf8("to utf-8, 64 of 24", shortTexts);
  const SText latin1 = TextOf(Latin1(kUnits));
  RegisterToBytes("to 8 bits 4096", {latin1});
  RegisterFromBytes("from 8 bits 4096", {latin1});
  RegisterConvertBuffer("convert buffer 4096", {latin1});
  RegisterScans({texts[4].text});
}
