// The wide C strings: length and searches, beside strings of 16-bit units of other libraries, and
// beside glibc's wcs functions, whose units are twice as wide.

#if KEST_PEER_QT
#include <QStringView>
#endif

#include <vector>

#include "kest/string.h"
#include "support/row.h"

namespace {

std::vector<unsigned short> Letters(size_t length) {
  std::vector<unsigned short> text(length + 1);
  for (size_t at = 0; at < length; ++at) text[at] = static_cast<unsigned short>('a' + at % 25);
  return text;
}

void RegisterLength(size_t length) {
  const std::string row = "ucslen " + std::to_string(length);
  const std::vector<unsigned short> text = Letters(length);
  Row(row, "kest", [text](benchmark::State& state) {
    for (auto _ : state) {
      benchmark::ClobberMemory();
      benchmark::DoNotOptimize(KEST::ucslen(text.data()));
    }
  });
#if KEST_PEER_QT
  Row(row, "qt", [text](benchmark::State& state) {
    for (auto _ : state) {
      benchmark::ClobberMemory();
      benchmark::DoNotOptimize(QStringView(reinterpret_cast<const char16_t*>(text.data())).size());
    }
  });
#endif
}

}  // namespace

void RegisterRows() {
  for (size_t length : {16384, 256, 16}) RegisterLength(length);
}
