// What the two targets of HTML functions share: a source, and a function held against its model.

#ifndef KEST_TESTS_FUZZ_HTML_CHECKS_H
#define KEST_TESTS_FUZZ_HTML_CHECKS_H

#include <string>

#include "fuzz/fuzz.h"
#include "kest/text.h"
#include "support/text.h"
#include "text/html_model.h"

namespace kest_fuzz {

class HtmlChecks {
 public:
  using Function = void (*)(const unsigned short* source, KEST::TBstr& result);
  using Model = std::u16string (*)(const std::u16string& source);

  void Take(Input& in) {
    m_start = in.Byte();
    m_source = m_room.Take(in);
    m_text.assign(m_source, m_source + m_room.Length());
    if (m_start > m_text.size()) m_start = m_text.size();
  }

  void Run(Function function, Model model) {
    KEST::TBstr result;
    function(m_source, result);
    FUZZ_CHECK(kest_test::TextOf(result) == model(m_text));
    FUZZ_CHECK(result.GetString()[result.GetLength()] == 0);

    KEST::TBstr own(m_source);
    function(own.GetString() + m_start, own);
    FUZZ_CHECK(kest_test::TextOf(own) == model(m_text.substr(m_start)));
  }

  void RoundTrip(Function there, Function back) {
    KEST::TBstr text;
    there(m_source, text);
    back(text.GetString(), text);
    FUZZ_CHECK(kest_test::TextOf(text) == m_text);
  }

 private:
  GuardedText<300> m_room;
  const unsigned short* m_source = nullptr;
  std::u16string m_text;
  size_t m_start = 0;
};

}  // namespace kest_fuzz

#endif  // KEST_TESTS_FUZZ_HTML_CHECKS_H
