// KestBerDecode against the rules one by one in wide numbers, and what it gives encoded again.

#include "fuzz/fuzz.h"
#include "kest/digest.h"

namespace {

constexpr int kIndefinite = 0x7fffffff;

struct Decoded {
  int taken, tag, length, value;
};

Decoded DecodeModel(const uint8_t* data, long long length) {
  const Decoded refused = {0, 0, 0, -1};
  if (length < 2) return refused;
  const int first = data[1];
  const int header = first > 0x80 ? first - 0x80 + 2 : 2;
  if (length < header) return refused;
  unsigned long long content = first < 0x80 ? static_cast<unsigned int>(first) : 0;
  for (int i = 2; i < header; ++i) content = (content * 256 + data[i]) % 0x100000000;
  const long long total = header + static_cast<long long>(content);
  if (length < total) return refused;
  return {static_cast<int>(total), data[0], first == 0x80 ? kIndefinite : static_cast<int>(content),
          header};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Decoded expected = DecodeModel(data, static_cast<long long>(size));
  KEST::SBerItem item = {0xee, -77, data};
  const int taken = KestBerDecode(data, static_cast<int>(size), &item);
  FUZZ_CHECK(taken == expected.taken);
  FUZZ_CHECK(item.tag == expected.tag);
  FUZZ_CHECK(item.length == expected.length);
  FUZZ_CHECK(item.value == (expected.value < 0 ? nullptr : data + expected.value));
  if (taken == 0) return 0;

  // Encoded into exactly the room it takes, and into one byte less. Up to 127 bytes of content the
  // short form is all there is, and decodes to the same item.
  static kest_fuzz::Guarded<uint8_t, 520> room;
  const int content = item.length == kIndefinite ? 0 : item.length;
  const int needed = content + (content < 0x80 ? 2 : 3);
  uint8_t* out = room.Take(static_cast<size_t>(needed));
  FUZZ_CHECK(KestBerEncode(out, needed - 1, &item) == 0);
  FUZZ_CHECK(KestBerEncode(out, needed, &item) == needed);
  FUZZ_CHECK(memcmp(out + needed - content, item.value, static_cast<size_t>(content)) == 0);
  if (content >= 0x80) return 0;
  KEST::SBerItem again = {0, 0, nullptr};
  FUZZ_CHECK(KestBerDecode(out, needed, &again) == needed);
  FUZZ_CHECK(again.tag == item.tag && again.length == item.length && again.value == out + 2);
  return 0;
}
