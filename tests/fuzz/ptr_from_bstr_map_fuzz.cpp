// TPtrFromBstrMap against plain entries.

#include <string>

#include "fuzz/map_steps.h"
#include "support/text.h"

namespace {

struct SBstrTraits {
  using Map = KEST::TPtrFromBstrMap;
  using Key = std::u16string;
  using Argument = const unsigned short*;
  using Out = KEST::TBstr;
  static constexpr bool kOwnsKeys = true;

  static Key TakeKey(kest_fuzz::StepInput& in) {
    Key key = in.Text(3);
    return key.substr(0, key.find(u'\0'));
  }
  static unsigned int Hash(const Key& key) {
    unsigned int hash = 0;
    for (char16_t unit : key) hash = hash * 33 + unit;
    return hash;
  }
  // Null is the empty text.
  static Argument Given(const Key& key) {
    static kest_fuzz::Guarded<unsigned short, 4> room;
    return key.empty() ? nullptr : room.Copy(key.c_str(), key.size() + 1);
  }
  static Argument Own(const Map::SAssoc& assoc) { return assoc.key.GetString(); }
  // A key that there is no memory to copy comes out empty.
  static bool IsKey(const Out& out, const Key& key, bool refused) {
    return kest_test::TextOf(out) == key || (refused && out.IsEmpty());
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<kest_fuzz::MapSteps<SBstrTraits>>(data, size, 80);
}
