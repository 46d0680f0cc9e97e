#include "kest/message.h"

namespace {

TEST(MessageId, ConstantsHaveTheirValues) {
  EXPECT_EQ(1u, KEST::kFirstMessageId);
  EXPECT_EQ(0xFFFFFFFFu, KEST::kQuitMessageId);
}

TEST(MessageId, CountsUpFromOneAndReusesNothing) {
  for (unsigned int expected = 1; expected <= 1000; ++expected) {
    const unsigned int id = KestRequestMessageId();
    ASSERT_EQ(expected, id);
    if (expected % 2 == 0) KestReleaseMessageId(id);
  }
}

TEST(MessageId, ReleaseIgnoresEveryIdentifier) {
  const unsigned int before = KestRequestMessageId();
  for (unsigned int id : {0u, 1u, before, KEST::kQuitMessageId}) KestReleaseMessageId(id);
  EXPECT_EQ(before + 1, KestRequestMessageId());
}

TEST(MessageId, CountsOnAcrossStartAndStop) {
  const unsigned int before = KestRequestMessageId();
  ASSERT_TRUE(KEST::MessageInit());
  EXPECT_EQ(before + 1, KestRequestMessageId());
  KEST::MessageTerm();
  EXPECT_EQ(before + 2, KestRequestMessageId());
}

}  // namespace
