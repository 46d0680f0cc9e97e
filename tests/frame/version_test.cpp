#include "kest/bridge/version.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Version, IsThatOfTheHeaders) {
  EXPECT_STREQ(KEST_VERSION_STRING, KestGetVersion());
  const std::string built = std::to_string(KEST_VERSION_MAJOR) + "." +
                            std::to_string(KEST_VERSION_MINOR) + "." +
                            std::to_string(KEST_VERSION_PATCH);
  EXPECT_EQ(built, KestGetVersion());
  EXPECT_TRUE(KEST::IsLibraryCompatible());
}

// tests/consumers/mismatch.sh runs a program with a library of another version.
TEST(Version, FitsWhenTheMajorNumberIsTheSameAndTheMinorOneNotBelow) {
  const std::string major = std::to_string(KEST_VERSION_MAJOR);
  const std::string minor = std::to_string(KEST_VERSION_MINOR);
  const std::string above = std::to_string(KEST_VERSION_MINOR + 1);
  const struct {
    std::string version;
    bool fits;
  } kRows[] = {
      {major + "." + minor + ".0", true},
      {major + "." + minor + ".99", true},
      {major + "." + minor, true},
      {major + ".0" + minor, true},
      {major + "." + above + ".0", true},
      {major + "." + above + "0.0", true},
      {major + "." + minor + ".0-rc1", true},
      {std::to_string(KEST_VERSION_MAJOR - 1) + "." + above + ".0", false},
      {std::to_string(KEST_VERSION_MAJOR + 1) + "." + minor + ".0", false},
      {major + "0." + minor + ".0", false},
      {major, false},
      {major + ".", false},
      {major + "." + "x", false},
      {major + "-" + minor, false},
      {"." + minor, false},
      {"-" + major + "." + minor, false},
      {" " + major + "." + minor, false},
      {"", false},
      {"4294967297." + minor, false},
      {major + ".99999999999999999999", false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.version);
    EXPECT_EQ(row.fits, KEST::IsLibraryCompatible(row.version.c_str()));
  }
  EXPECT_FALSE(KEST::IsLibraryCompatible(nullptr));
}

}  // namespace
