// kest/text.h at the edges of its arguments.

#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

std::string Dotted(unsigned int address) {
  std::string text = std::to_string(address >> 24);
  for (int shift : {16, 8, 0}) text += "." + std::to_string(address >> shift & 0xFF);
  return text;
}

// A conversion of "abc", or of null, from one text to another.
template <typename Convert>
Sweep Converts(const std::u16string& front, const std::u16string& back, Convert convert) {
  return Over([=](bool given) {
    TBstr out(KEST_TEXT("before"));
    convert(Abc(given), out);
    ExpectText(front + Given(given) + back, out);
  });
}

void AddInterchangeRows(Table& table) {
  table.Row("KestZelToIsoEncoding", Around(2, 3, 13), [](int encoding) {
    TBstr name(Abc(true));
    const bool known = encoding == 0 || encoding == 2 || encoding == 3 || encoding == 13;
    EXPECT_EQ(known ? 1 : 0, KestZelToIsoEncoding(encoding, name));
    EXPECT_EQ(known, TextOf(name) != u"?");
    int number = -5;
    EXPECT_EQ(known ? 1 : 0, KestIsoToZelEncoding(name.GetString(), &number));
    EXPECT_EQ(known ? encoding : -1, number);
  });
  table.Row("KestIsoToZelEncoding", [](bool given) {
    int number = -5;
    EXPECT_EQ(given ? 0 : 1, KestIsoToZelEncoding(Abc(given), &number));
    EXPECT_EQ(given ? -1 : 0, number);
  });
  table.Row("KestZelToIsoLang", Around(1, 143), [](unsigned int language) {
    TBstr code(Abc(true));
    const bool known = language <= 143;
    EXPECT_EQ(known ? 1 : 0, KestZelToIsoLang(language, code));
    EXPECT_EQ(known, TextOf(code) != u"?");
    int number = -5;
    EXPECT_EQ(known ? 1 : 0, KestIsoToZelLang(code.GetString(), &number));
    EXPECT_EQ(known ? static_cast<int>(language) : -1, number);
  });
  table.Row("KestIsoToZelLang", [](bool given) {
    int number = -5;
    EXPECT_EQ(given ? 0 : 1, KestIsoToZelLang(Abc(given), &number));
    EXPECT_EQ(given ? -1 : 0, number);
  });
  table.Row("KestEntityEscape", Converts(u"", u"", KestEntityEscape));
  table.Row("KestEntityUnescape", Converts(u"", u"", KestEntityUnescape));
  table.Row("KestPlainToHtml", Converts(u"<HTML><BODY>", u"</BODY></HTML>", KestPlainToHtml));
  table.Row("KestHtmlToPlain", Converts(u"", u"", KestHtmlToPlain));
  table.Row("KestInetAtoN", [](bool given, bool wantsAddress, bool wantsPort) {
    const Units16 text(std::u16string(u"1.2.3.4:80", 11));
    unsigned int address = 9, port = 9;
    EXPECT_TRUE(KestInetAtoN(given ? text.Get() : nullptr, wantsAddress ? &address : nullptr,
                             wantsPort ? &port : nullptr));
    EXPECT_EQ(!wantsAddress ? 9u : given ? 0x01020304u : 0u, address);
    EXPECT_EQ(!wantsPort ? 9u : given ? 80u : 0u, port);
  });
  table.Row("KestInetNtoA", [](unsigned int address) {
    TBstr text;
    KestInetNtoA(address, text);
    ExpectText(Wide(Dotted(address)), text);
  });
  table.Row("KestInetNtoAEx", Around(65535), [](unsigned int address, unsigned int port) {
    TBstr text;
    KestInetNtoAEx(address, port, text);
    // A port is written as a signed number.
    ExpectText(Wide(Dotted(address) + ":" + std::to_string(static_cast<int>(port))), text);
  });
}

const Table kInterchange(AddInterchangeRows);

TEST(ArgumentSweep, Interchange) { kInterchange.Run(); }

}  // namespace

}  // namespace kest_test
