// A program with a free of its own, so that nothing is known of the room in a block: strings grow
// all the same.

#include <gtest/gtest.h>

#include "kest/string.h"
#include "support/text.h"

extern "C" void __libc_free(void* block);

namespace {

int s_freed = 0;

}  // namespace

extern "C" void free(void* block) noexcept {
  ++s_freed;
  __libc_free(block);
}

TEST(OwnFree, StringsGrow) {
  std::u16string model;
  const int before = s_freed;
  {
    KEST::TBstr s;
    for (int i = 0; i < 1000; ++i) {
      s.Append(u'x');
      model += u'x';
    }
    s.Append(s);
    EXPECT_EQ(model + model, kest_test::TextOf(s));
    s.AdjustBuffer(3, true);
    EXPECT_EQ(u"xxx", kest_test::TextOf(s));
  }
  EXPECT_LT(before, s_freed) << "the library does not take this program's free";
}
