// Operations of kest/string.h that ask for memory.

#include <optional>

#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

// An operation on the string "a b".
template <typename Operation>
auto OnText(Operation operation) {
  return OnString(KEST_TEXT("a b"), operation);
}

// A string made from args.
template <typename... Args>
auto Made(Args... args) {
  return [=](Attempts& attempts) { attempts([&] { return Said(TBstr(args...)); }); };
}

// An operation that gives a BSTR.
template <typename Operation>
auto Given(Operation operation) {
  return [operation](Attempts& attempts) {
    attempts([&] {
      unsigned short* const bstr = operation();
      const std::string said = bstr != nullptr ? Said(bstr) : "null";
      KestFreeString(bstr);
      return said;
    });
  };
}

void Formatted(TBstr& text, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
}

const unsigned short* const kWord = KEST_TEXT("word");

}  // namespace

std::vector<RefusedMemoryRow> StringRows() {
  return {
      {{"KestAllocString"}, "word", {"null"}, Given([] { return KestAllocString(kWord); })},
      {{"KestAllocStringLen"}, "wo", {"null"}, Given([] { return KestAllocStringLen(kWord, 2); })},

      {{"KEST::TConvertBuffer::TConvertBuffer(char const*, int)"},
       "4 word",
       {"0 null"},
       [](Attempts& attempts) {
         attempts([] {
           const TConvertBuffer made("word");
           const unsigned short* text = made.GetBuffer();
           return Said(made.GetLength(), text != nullptr ? text : KEST_TEXT("null"));
         });
       }},

      {{"KEST::TBstr::TBstr(KEST::TBstr const&)"},
       "a b",
       {""},
       [](Attempts& attempts) {
         const TBstr text(KEST_TEXT("a b"));
         attempts([&] { return Said(TBstr(text)); });
       }},
      {{"KEST::TBstr::TBstr(unsigned short, int)"}, "xxx", {""}, Made(u'x', 3)},
      {{"KEST::TBstr::TBstr(unsigned short, int)"}, std::string(200, 'x'), {""}, Made(u'x', 200)},
      {{"KEST::TBstr::TBstr(unsigned short const*)"}, "word", {""}, Made(kWord)},
      {{"KEST::TBstr::TBstr(unsigned short const*, int)"}, "wo", {""}, Made(kWord, 2)},
      {{"KEST::TBstr::TBstr(char const*)"}, "word", {""}, Made("word")},
      {{"KEST::TBstr::TBstr(char const*, int)"}, "wo", {""}, Made("word", 2)},

      {{"KEST::TBstr::AdjustBuffer(int, bool)"}, "true a ", {"false "}, OnText([](TBstr& text) {
         return text.AdjustBuffer(2, true);
       })},
      {{"KEST::TBstr::InternalInit(unsigned short const*, int)"},
       "true wo",
       {"false "},
       OnText([](TBstr& text) { return text.InternalInit(kWord, 2); })},
      {{"KEST::TBstr::InternalAppend(unsigned short const*, int)"},
       "true a bwo",
       {"false "},
       OnText([](TBstr& text) { return text.InternalAppend(kWord, 2); })},
      {{"KEST::TBstr::CreateMultibyteBuffer() const"},
       "true a b",
       {"false a b"},
       OnText([](TBstr& text) { return text.CreateMultibyteBuffer(); })},
      {{"KEST::TBstr::GetMultibyteString() const"}, "a b a b", {" a b"}, OnText([](TBstr& text) {
         return text.GetMultibyteString();
       })},
      {{"KEST::TBstr::Copy() const"},
       "a b",
       {"null"},
       [](Attempts& attempts) {
         const TBstr text(KEST_TEXT("a b"));
         Given([&] { return text.Copy(); })(attempts);
       }},

      {{"KEST::TBstr::Assign(KEST::TBstr const&)"},
       "word",
       {""},
       [](Attempts& attempts) {
         const TBstr word(kWord);
         OnText([&](TBstr& text) { text.Assign(word); })(attempts);
       }},
      {{"KEST::TBstr::Assign(unsigned short)"}, "x", {""}, OnText([](TBstr& text) {
         text.Assign(u'x');
       })},
      {{"KEST::TBstr::Assign(unsigned short const*)"}, "word", {""}, OnText([](TBstr& text) {
         text.Assign(kWord);
       })},
      {{"KEST::TBstr::Assign(char const*)"}, "word", {""}, OnText([](TBstr& text) {
         text.Assign("word");
       })},
      {{"KEST::TBstr::Append(KEST::TBstr const&)"},
       "a bword",
       {""},
       [](Attempts& attempts) {
         const TBstr word(kWord);
         OnText([&](TBstr& text) { text.Append(word); })(attempts);
       }},
      {{"KEST::TBstr::Append(KEST::TBstr const&)"}, "a ba b", {""}, OnText([](TBstr& text) {
         text.Append(text);
       })},
      {{"KEST::TBstr::Append(unsigned short)"}, "a bx", {""}, OnText([](TBstr& text) {
         text.Append(u'x');
       })},
      {{"KEST::TBstr::Append(unsigned short const*)"}, "a bword", {""}, OnText([](TBstr& text) {
         text.Append(kWord);
       })},
      {{"KEST::TBstr::Append(char const*)"}, "a bword", {"a b", ""}, OnText([](TBstr& text) {
         text.Append("word");
       })},

      {{"inline TBstr::operator=(const TBstr&)"},
       "word",
       {""},
       [](Attempts& attempts) {
         const TBstr word(kWord);
         OnText([&](TBstr& text) { text = word; })(attempts);
       }},
      {{"inline TBstr::operator=(const unsigned short*)"}, "word", {""}, OnText([](TBstr& text) {
         text = kWord;
       })},
      {{"inline TBstr::operator=(const char*)"}, "word", {""}, OnText([](TBstr& text) {
         text = "word";
       })},
      {{"inline TBstr::operator=(unsigned short)"}, "x", {""}, OnText([](TBstr& text) {
         text = static_cast<unsigned short>('x');
       })},
      {{"inline TBstr::operator+=(const TBstr&)"},
       "a bword",
       {""},
       [](Attempts& attempts) {
         const TBstr word(kWord);
         OnText([&](TBstr& text) { text += word; })(attempts);
       }},
      {{"inline TBstr::operator+=(const unsigned short*)"},
       "a bword",
       {""},
       OnText([](TBstr& text) { text += kWord; })},
      {{"inline TBstr::operator+=(const char*)"}, "a bword", {"a b", ""}, OnText([](TBstr& text) {
         text += "word";
       })},
      {{"inline TBstr::operator+=(unsigned short)"}, "a bx", {""}, OnText([](TBstr& text) {
         text += static_cast<unsigned short>('x');
       })},
      {{"inline operator+(const TBstr&, const TBstr&)"},
       "a ba b a b",
       {"a b a b| a b", " a b"},
       OnText([](TBstr& text) { return text + text; })},
      {{"inline operator+(const TBstr&, const unsigned short*)"},
       "a bword a b",
       {"word a b| a b", " a b"},
       OnText([](TBstr& text) { return text + kWord; })},
      {{"inline operator+(const unsigned short*, const TBstr&)"},
       "worda b a b",
       {"a b a b| a b", " a b"},
       OnText([](TBstr& text) { return kWord + text; })},
      {{"inline operator+(const TBstr&, unsigned short)"},
       "a bx a b",
       {"x a b| a b", " a b"},
       OnText([](TBstr& text) { return text + static_cast<unsigned short>('x'); })},

      {{"KEST::TBstr::Mid(int, int) const"}, "  a b", {" a b"}, OnText([](TBstr& text) {
         return text.Mid(1, 1);
       })},
      {{"KEST::TBstr::Mid(int) const"}, " b a b", {" a b"}, OnText([](TBstr& text) {
         return text.Mid(1);
       })},
      {{"KEST::TBstr::Left(int) const"}, "a  a b", {" a b"}, OnText([](TBstr& text) {
         return text.Left(2);
       })},
      {{"KEST::TBstr::Right(int) const"}, " b a b", {" a b"}, OnText([](TBstr& text) {
         return text.Right(2);
       })},
      {{"KEST::TBstr::GetBestEncoding() const"}, "us-ascii a b", {" a b"}, OnText([](TBstr& text) {
         return text.GetBestEncoding();
       })},

      {{"KEST::TBstr::TrimLeft(unsigned short)"}, " b", {""}, OnText([](TBstr& text) {
         text.TrimLeft(u'a');
       })},
      {{"KEST::TBstr::TrimRight(unsigned short)"}, "a ", {""}, OnText([](TBstr& text) {
         text.TrimRight(u'b');
       })},
      {{"KEST::TBstr::Normalize()"}, "ab", {""}, OnText([](TBstr& text) { text.Normalize(); })},
      {{"KEST::TBstr::Replace(unsigned short const*, unsigned short const*)"},
       "1 wordb",
       {"0 "},
       OnText([](TBstr& text) { return text.Replace(KEST_TEXT("a "), kWord); })},
      {{"KEST::TBstr::Remove(unsigned short)"}, "1 ab", {"1 "}, OnText([](TBstr& text) {
         return text.Remove(u' ');
       })},
      {{"KEST::TBstr::Insert(int, unsigned short)"}, "4 ax b", {"0 "}, OnText([](TBstr& text) {
         return text.Insert(1, u'x');
       })},
      {{"KEST::TBstr::Insert(int, unsigned short const*)"},
       "7 aword b",
       {"0 "},
       OnText([](TBstr& text) { return text.Insert(1, kWord); })},
      {{"KEST::TBstr::Delete(int, int)"}, "2 ab", {"0 "}, OnText([](TBstr& text) {
         return text.Delete(1, 1);
       })},
      {{"KEST::TBstr::Format(unsigned short const*, ...)"}, "word 5", {""}, OnText([](TBstr& text) {
         text.Format(KEST_TEXT("%s %d"), kWord, 5);
       })},
      {{"KEST::TBstr::FormatV(unsigned short const*, char*)"},
       "word 5",
       {""},
       OnText([](TBstr& text) { Formatted(text, KEST_TEXT("%s %d"), kWord, 5); })},

      // What only ends up empty works without memory.
      {{"KEST::TBstr::Empty()"}, "", {}, OnText([](TBstr& text) { text.Empty(); })},
      {{"KEST::TBstr::GetBstrPtr()"}, "", {}, OnText([](TBstr& text) { text.GetBstrPtr(); })},
  };
}

}  // namespace kest_test
