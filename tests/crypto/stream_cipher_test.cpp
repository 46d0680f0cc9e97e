#include "crypto/cipher_checks.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TStreamCipher;

// Adds a count to the data, and notes what it is asked to do.
class TToyStream : public TStreamCipher {
 public:
  TToyStream() = default;
  explicit TToyStream(TCipher::ECipherOp direction) : TStreamCipher(direction) {}

  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  void ProcessStream(unsigned char* data, int len) override {
    calls += "stream(" + std::to_string(len) + ")";
    for (int n = 0; n < len; ++n) data[n] = static_cast<unsigned char>(data[n] + ++position);
  }
  void Reset() override {
    calls += "reset";
    position = 0;
  }

  std::string calls;
  int position = 0;
};

TEST(StreamCipher, FinalResetsAfterTheData) {
  TToyStream cipher;
  Bytes data = Counting(4);
  EXPECT_EQ(4, cipher.ProcessData(data.data(), 4, false));
  EXPECT_EQ("stream(4)", cipher.calls);
  EXPECT_EQ(2, cipher.ProcessData(data.data(), 2, true));
  EXPECT_EQ("stream(4)stream(2)reset", cipher.calls);
  EXPECT_EQ(0, cipher.position);
}

TEST(StreamCipher, ReturnsTheLengthWhateverItIs) {
  TToyStream cipher;
  EXPECT_EQ(0, cipher.ProcessData(nullptr, 0, true));
  EXPECT_EQ("stream(0)reset", cipher.calls);
  for (int length = 1; length < 100; ++length) {
    Bytes data = Counting(length);
    EXPECT_EQ(length, cipher.ProcessData(data.data(), length, true));
  }
}

TEST(StreamCipher, ANegativeLengthIsRefused) {
  TToyStream cipher;
  for (bool final : {false, true}) {
    for (int length : {-1, -8, INT_MIN}) {
      EXPECT_EQ(0, cipher.ProcessData(nullptr, length, final));
      EXPECT_EQ("", cipher.calls);
    }
  }
}

TEST(StreamCipher, BothDirectionsDoTheSame) {
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt, kOddOp}) {
    TToyStream cipher(op);
    EXPECT_EQ("040c14", Hex(Process(cipher, Counting(3), true)));
    EXPECT_EQ("stream(3)reset", cipher.calls);
  }
}

}  // namespace
