#include "kest/kest.h"

namespace {

TEST(Version, IsThatOfTheHeaders) {
  EXPECT_STREQ(KEST_VERSION_STRING, KestGetVersion());
  const std::string built = std::to_string(KEST_VERSION_MAJOR) + "." +
                            std::to_string(KEST_VERSION_MINOR) + "." +
                            std::to_string(KEST_VERSION_PATCH);
  EXPECT_EQ(built, KestGetVersion());
}

}  // namespace
