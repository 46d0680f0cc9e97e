// The output format of POSIX cksum: its CRC, the bytes, the name. The name is escaped as in
// MD5SUMS.

#include <stdio.h>

#include "../format.h"
#include "kest/file.h"
#include "kest/frame.h"

using KEST::TBstr;
using KEST::TFile;

namespace {

constexpr unsigned int kPolynomial = 0x04C11DB7;
constexpr int kPieceSize = 64 * 1024;
unsigned int s_table[256];

void FillTable() {
  for (unsigned int i = 0; i < 256; ++i) {
    unsigned int crc = i << 24;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ ((crc >> 31) * kPolynomial);
    s_table[i] = crc;
  }
}

unsigned int Step(unsigned int crc, unsigned int byte) {
  return crc << 8 ^ s_table[crc >> 24 ^ byte];
}

// The length follows the data, its lowest byte first, without zeros at its end.
bool Checksum(const TBstr& spec, unsigned int* crc, unsigned int* length) {
  TFile file;
  if (!file.Open(spec, 0, false)) return false;
  unsigned char data[kPieceSize];
  *crc = *length = 0;
  for (int count = kPieceSize; count == kPieceSize; *length += static_cast<unsigned int>(count)) {
    count = file.Read(data, kPieceSize);
    for (int i = 0; i < count; ++i) *crc = Step(*crc, data[i]);
  }
  for (unsigned int rest = *length; rest != 0; rest >>= 8) *crc = Step(*crc, rest & 0xFF);
  *crc = ~*crc;
  return *length == file.GetLength();
}

}  // namespace

extern "C" {

KEST_API bool SharedLibInit(const char*) {
  FillTable();
  return true;
}
KEST_API void SharedLibTerm(void) {}

KEST_API const char* CensusFormatName(void) { return "CKSUMS"; }

KEST_API bool CensusFormatWrite(const census::SFormatHost* host) {
  for (int i = 0; i < host->fileCount; ++i) {
    census::SFormatFile file;
    unsigned int crc, length;
    if (!host->getFile(host->self, i, &file)) return false;
    if (!Checksum(file.spec, &crc, &length)) continue;  // it has gone since it was counted
    char numbers[32];
    snprintf(numbers, sizeof(numbers), "%u %u ", crc, length);
    host->put(host->self, numbers);
    host->put(host->self, file.path);
    host->put(host->self, "\n");
  }
  return true;
}

}  // extern "C"
