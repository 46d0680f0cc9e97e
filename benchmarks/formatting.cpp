// Formatted output into a buffer of the caller's. The peers other than swprintf and Qt write bytes.

#if KEST_PEER_APR
#include <apr_strings.h>
#endif
#if KEST_PEER_FMT
#include <fmt/compile.h>
#include <fmt/format.h>
#endif
#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_QT
#include <QString>
#endif

#include <stdio.h>
#include <wchar.h>

#include "kest/string.h"
#include "support/row.h"

namespace {

using Wide = unsigned short;

constexpr size_t kRoom = 128;

// A name, numbers in three notations, a character, a column.
constexpr char kFormat[] = "%s: %d of %u, %x %c %5d";
constexpr char kName[] = "some file.txt";

// Numbers of all lengths and both signs.
class TNumbers {
 public:
  TNumbers() {
    unsigned int state = 1;
    for (int& value : values) {
      state = state * 1664525 + 1013904223;
      value = static_cast<int>(state) >> (state >> 8) % 31;
    }
  }
  int Next() { return values[next++]; }

 private:
  int values[256];
  unsigned char next = 0;
};

// print(buffer, number, another) writes one text.
template <typename Unit, typename Print>
void PrintRow(const std::string& row, const std::string& who, Print print) {
  Row(row, who, [print](benchmark::State& state) {
    TNumbers numbers;
    Unit buffer[kRoom];
    for (auto _ : state) {
      const int number = numbers.Next();
      print(buffer, number, numbers.Next());
      benchmark::DoNotOptimize(buffer);
      benchmark::ClobberMemory();
    }
  });
}

void RegisterNumber() {
  const std::string row = "%d";
  PrintRow<Wide>(row, "kest", [](Wide* buffer, int number, int) {
    KEST::snuprintf(buffer, kRoom, KEST_TEXT("%d"), number);
  });
  PrintRow<char>(row, "glibc",
                 [](char* buffer, int number, int) { snprintf(buffer, kRoom, "%d", number); });
  PrintRow<wchar_t>(row, "glibc_wide", [](wchar_t* buffer, int number, int) {
    swprintf(buffer, kRoom, L"%d", number);
  });
#if KEST_PEER_APR
  PrintRow<char>(row, "apr",
                 [](char* buffer, int number, int) { apr_snprintf(buffer, kRoom, "%d", number); });
#endif
#if KEST_PEER_FMT
  PrintRow<char>(row, "fmt", [](char* buffer, int number, int) {
    *fmt::format_to_n(buffer, kRoom - 1, fmt::runtime("{}"), number).out = 0;
  });
  PrintRow<char>(row, "fmt_compile", [](char* buffer, int number, int) {
    *fmt::format_to_n(buffer, kRoom - 1, FMT_COMPILE("{}"), number).out = 0;
  });
#endif
#if KEST_PEER_GLIB
  PrintRow<char>(row, "glib",
                 [](char* buffer, int number, int) { g_snprintf(buffer, kRoom, "%d", number); });
#endif
#if KEST_PEER_QT
  PrintRow<char>(row, "qt", [](char*, int number, int) {
    benchmark::DoNotOptimize(QString::asprintf("%d", number));
  });
#endif
}

void RegisterMixed() {
  const std::string row = kFormat;
  PrintRow<Wide>(row, "kest", [](Wide* buffer, int a, int b) {
    KEST::snuprintf(buffer, kRoom, KEST_TEXT("%s: %d of %u, %x %c %5d"), KEST_TEXT("some file.txt"),
                    a, b, a, 'x', b & 0xFFF);
  });
  PrintRow<wchar_t>(row, "glibc_wide", [](wchar_t* buffer, int a, int b) {
    swprintf(buffer, kRoom, L"%ls: %d of %u, %x %c %5d", L"some file.txt", a, b, a, 'x', b & 0xFFF);
  });
  PrintRow<char>(row, "glibc", [](char* buffer, int a, int b) {
    snprintf(buffer, kRoom, kFormat, kName, a, b, a, 'x', b & 0xFFF);
  });
#if KEST_PEER_APR
  PrintRow<char>(row, "apr", [](char* buffer, int a, int b) {
    apr_snprintf(buffer, kRoom, kFormat, kName, a, b, a, 'x', b & 0xFFF);
  });
#endif
#if KEST_PEER_FMT
  PrintRow<char>(row, "fmt", [](char* buffer, int a, int b) {
    const unsigned int unsignedA = static_cast<unsigned int>(a);
    const unsigned int unsignedB = static_cast<unsigned int>(b);
    const auto format = fmt::runtime("{}: {} of {}, {:x} {} {:5}");
    *fmt::format_to_n(buffer, kRoom - 1, format, kName, a, unsignedB, unsignedA, 'x', b & 0xFFF)
         .out = 0;
  });
  PrintRow<char>(row, "fmt_compile", [](char* buffer, int a, int b) {
    const unsigned int unsignedA = static_cast<unsigned int>(a);
    const unsigned int unsignedB = static_cast<unsigned int>(b);
    const auto format = FMT_COMPILE("{}: {} of {}, {:x} {} {:5}");
    *fmt::format_to_n(buffer, kRoom - 1, format, kName, a, unsignedB, unsignedA, 'x', b & 0xFFF)
         .out = 0;
  });
#endif
#if KEST_PEER_GLIB
  PrintRow<char>(row, "glib", [](char* buffer, int a, int b) {
    g_snprintf(buffer, kRoom, kFormat, kName, a, b, a, 'x', b & 0xFFF);
  });
#endif
#if KEST_PEER_QT
  PrintRow<char>(row, "qt", [](char*, int a, int b) {
    benchmark::DoNotOptimize(QString::asprintf(kFormat, kName, a, b, a, 'x', b & 0xFFF));
  });
#endif
}

}  // namespace

void RegisterRows() {
  RegisterNumber();
  RegisterMixed();
}
