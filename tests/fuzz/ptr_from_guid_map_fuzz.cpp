// TPtrFromGuidMap against plain entries.

#include <string.h>

#include "fuzz/map_steps.h"

namespace {

struct SGuidTraits {
  using Map = KEST::TPtrFromGuidMap;
  struct Key {
    KEST::_GUID guid;
    bool operator==(const Key& other) const {
      return memcmp(&guid, &other.guid, sizeof(guid)) == 0;
    }
  };
  using Argument = const KEST::_GUID&;
  using Out = KEST::_GUID;
  static constexpr bool kOwnsKeys = false;

  // Alike but for the first word, the last byte, or both.
  static Key TakeKey(kest_fuzz::StepInput& in) {
    const int byte = in.Byte();
    const unsigned int first = byte < 0xF0 ? static_cast<unsigned int>(byte / 2 % 24) : in.Word();
    const unsigned char last = static_cast<unsigned char>(byte % 2);
    return {{first, 2, 3, {4, 5, 6, 7, 8, 9, 10, last}}};
  }
  static unsigned int Hash(const Key& key) { return key.guid.data1; }
  static Argument Given(const Key& key) { return key.guid; }
  static Argument Own(const Map::SAssoc& assoc) { return assoc.key; }
  static bool IsKey(const Out& out, const Key& key, bool) { return Key{out} == key; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<kest_fuzz::MapSteps<SGuidTraits>>(data, size, 80);
}
