#include "addresses.h"

#include "input.h"
#include "kest/text.h"
#include "numbers.h"

using KEST::TBstr;

namespace census {

namespace {

const char* const kPart = "addresses";
const unsigned short* const kTab = KEST_TEXT("\t");

// Four decimal numbers up to 255. The library takes more than that for an address.
bool IsAddress(const TBstr& text) {
  int parts = 1, digits = 0, number = 0;
  for (int i = 0; i < text.GetLength(); ++i) {
    const unsigned short unit = text.GetAt(i);
    if (unit == u'.') {
      if (digits == 0) return false;
      ++parts;
      digits = number = 0;
      continue;
    }
    if (!kest_isudigit(unit) || (digits > 0 && number == 0)) return false;
    ++digits;
    number = 10 * number + (unit - u'0');
    if (number > 255) return false;
  }
  return parts == 4 && digits > 0;
}

void PutAddress(const TBstr& file, const TBstr& word, TextList* rows, Notes& notes) {
  unsigned int number;
  if (!IsAddress(word) || !KestInetAtoN(word.GetString(), &number, nullptr)) {
    return notes.Add(kPart, file, word + KEST_TEXT(" is no IPv4 address in full"));
  }
  TBstr back;
  KestInetNtoA(number, back);
  rows->Add(file + kTab + word + kTab + Decimal(number) + kTab + back);
}

// The addresses are first words of lines, or, with a keyword, second words behind it.
void ReadFile(const TBstr& system, const TBstr& file, const TBstr& keyword, TextList* rows,
              Notes& notes) {
  TBstr text, reason, line, word;
  if (!ReadWhole(SystemSpec(system, file), &text, &reason)) return notes.Add(kPart, file, reason);
  for (Lines lines(text); lines.Next(&line);) {
    const int comment = line.FindOneOf(keyword.IsEmpty() ? KEST_TEXT("#") : KEST_TEXT("#;"));
    if (comment >= 0) line = line.Left(comment);
    Words words(line);
    if (!words.Next(&word)) continue;
    if (!keyword.IsEmpty() && (word != keyword || !words.Next(&word))) continue;
    PutAddress(file, word, rows, notes);
  }
}

}  // namespace

void ReadAddresses(const TBstr& system, TextList* rows, Notes& notes) {
  ReadFile(system, "/etc/hosts", TBstr(), rows, notes);
  ReadFile(system, "/etc/resolv.conf", "nameserver", rows, notes);
  if (rows->GetCount() == 0) notes.Add(kPart, "/etc/hosts", "no addresses here");
}

}  // namespace census
