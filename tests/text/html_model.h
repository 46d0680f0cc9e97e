// What the HTML functions do, one step after the other as they are described.

#ifndef KEST_TESTS_TEXT_HTML_MODEL_H
#define KEST_TESTS_TEXT_HTML_MODEL_H

#include <string>

namespace kest_test {

struct MarkupRow {
  std::u16string character, entity;
};

inline const MarkupRow kMarkupRows[] = {
    {u"&", u"&amp;"},
    {u"<", u"&lt;"},
    {u">", u"&gt;"},
    {u"\"", u"&quot;"},
};

inline std::u16string ReplaceAll(std::u16string text, const std::u16string& from,
                                 const std::u16string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

inline std::u16string PlainEscape(const std::u16string& source) {
  std::u16string text = source;
  for (const MarkupRow& row : kMarkupRows) text = ReplaceAll(text, row.character, row.entity);
  return text;
}

inline std::u16string PlainUnescape(const std::u16string& text) {
  std::u16string out;
  size_t start = text.npos;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '&') {
      start = i;
    } else if (start == text.npos) {
      out += text[i];
    } else if (text[i] == ';') {
      for (const MarkupRow& row : kMarkupRows) {
        if (text.substr(start, i + 1 - start) == row.entity) out += row.character;
      }
      start = text.npos;
    }
  }
  return out;
}

inline std::u16string PlainDocument(const std::u16string& text) {
  return u"<HTML><BODY>" + ReplaceAll(PlainEscape(text), u"\r\n", u"<BR>") + u"</BODY></HTML>";
}

inline std::u16string PlainStrip(const std::u16string& html) {
  std::u16string text;
  size_t start = html.npos;
  for (size_t i = 0; i < html.size(); ++i) {
    if (html[i] == '<') {
      start = i;
    } else if (start == html.npos) {
      text += html[i];
    } else if (html[i] == '>') {
      const std::u16string tag = html.substr(start, i + 1 - start);
      if (tag == u"<BR>" || tag == u"<br>" || tag == u"<Br>" || tag == u"<bR>") text += u"\r\n";
      start = html.npos;
    }
  }
  return PlainUnescape(text);
}

}  // namespace kest_test

#endif  // KEST_TESTS_TEXT_HTML_MODEL_H
