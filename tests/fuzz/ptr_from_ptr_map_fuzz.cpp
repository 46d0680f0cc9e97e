// TPtrFromPtrMap against plain entries.

#include "fuzz/map_steps.h"

namespace {

struct SPtrTraits {
  using Map = KEST::TPtrFromPtrMap;
  using Key = void*;
  using Argument = void*;
  using Out = void*;
  static constexpr bool kOwnsKeys = false;

  // Many in one bucket, and addresses of any size.
  static Key TakeKey(kest_fuzz::StepInput& in) {
    const int byte = in.Byte();
    return kest_test::Element(byte < 0xF0 ? static_cast<uintptr_t>(byte % 48) : in.Word());
  }
  static unsigned int Hash(Key key) {
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(key));
  }
  static Argument Given(Key key) { return key; }
  static Argument Own(const Map::SAssoc& assoc) { return assoc.key; }
  static bool IsKey(Out out, Key key, bool) { return out == key; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<kest_fuzz::MapSteps<SPtrTraits>>(data, size, 80);
}
