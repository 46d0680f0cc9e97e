#include "kest/digest.h"

#include <string.h>

#include <algorithm>

#include "frame/layout.h"

namespace {

// The blocks hold size bytes each, and the digest writes as many as it likes.
bool Fits(const KEST::TMessageDigest& digest, int size) {
  return size > 0 && size == digest.GetDigestSize();
}

// counter += increment, as big-endian numbers of size bytes that wrap.
void Add(unsigned char* counter, const unsigned char* increment, int size) {
  unsigned int carry = 0;
  for (int i = size - 1; i >= 0; --i) {
    carry = (carry >> 8) + counter[i] + increment[i];
    counter[i] = static_cast<unsigned char>(carry);
  }
}

// Steps the last byte, and then the byte before as long as the one just stepped was 0. On purpose:
// the carry comes one step early, and the output sequence depends on it.
void StepByOne(unsigned char* counter, int size) {
  for (int i = size - 1; i >= 0; --i) {
    if (counter[i]++ != 0) return;
  }
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TDigestPrng, 32, 56);

// The digest may be a member of the derived class, not yet constructed: it is asked for its size
// only when it is used.
TDigestPrng::TDigestPrng(TMessageDigest& source, unsigned char* buffers, int digestSize)
    : digest(&source), size(digestSize), seedPending(false), seedCountdown(2), available(0) {
  KEST_FIELD_AT(TDigestPrng, digest, 0, 0);
  KEST_FIELD_AT(TDigestPrng, size, 4, 8);
  KEST_FIELD_AT(TDigestPrng, seedPending, 8, 12);
  KEST_FIELD_AT(TDigestPrng, seedCountdown, 12, 16);
  KEST_FIELD_AT(TDigestPrng, counter, 16, 24);
  KEST_FIELD_AT(TDigestPrng, increment, 20, 32);
  KEST_FIELD_AT(TDigestPrng, output, 24, 40);
  KEST_FIELD_AT(TDigestPrng, available, 28, 48);
  const size_t n = static_cast<size_t>(std::max(size, 0));
  counter = buffers;
  increment = counter + n;
  output = increment + n;
  if (n != 0) memset(counter, 0, n);
}

void TDigestPrng::Seed(const unsigned char* data, int length) {
  if (length < 0 || !Fits(*digest, size)) return;
  if (seedCountdown == 2) {
    digest->Update(nullptr, 0);
    digest->Finish(increment, 0);
    increment[size - 1] |= 1;
  }
  if (seedCountdown > 0) --seedCountdown;
  if (seedCountdown == 0 && !seedPending) digest->Update(counter, size);
  digest->Update(data, length);
  seedPending = true;
}

void TDigestPrng::Generate(unsigned char* out, int length) {
  if (length < 0 || !Fits(*digest, size)) return;
  if (seedPending) {
    seedPending = false;
    available = 0;
    digest->Finish(counter, 0);
  }
  const auto handOut = [&](int count) {
    if (count == 0) return;
    memcpy(out, output + size - available, static_cast<size_t>(count));
    out += count;
    length -= count;
    available -= count;
  };
  while (length > available) {
    handOut(available);
    digest->Update(counter, size);
    digest->Finish(output, 0);
    available = size;
    if (seedCountdown == 0) {
      Add(counter, increment, size);
    } else {
      StepByOne(counter, size);
    }
  }
  handOut(length);
}

}  // namespace KEST
