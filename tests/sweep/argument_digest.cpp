// kest/digest.h at the edges of its arguments.

#include "crypto/cipher_checks.h"
#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;
using Block = GuardedBlock<unsigned char>;

// More data than this is no edge but work.
constexpr int kMuchData = 1000;

template <typename Digest>
Bytes DigestOf(Digest& digest) {
  Bytes result(static_cast<size_t>(digest.GetDigestSize()));
  EXPECT_EQ(digest.GetDigestSize(), digest.Finish(result.data(), 0));
  return result;
}

template <typename Digest>
Bytes DigestOf(const Bytes& message) {
  Digest digest;
  digest.Update(message.data(), static_cast<int>(message.size()));
  return DigestOf(digest);
}

// The bytes of a message of this length; none below 0.
Bytes Message(int length) { return Counting(std::max(length, 0)); }

template <typename Digest>
Sweep Finishes() {
  return Over(Around(Digest().GetDigestSize()), [](int length) {
    Digest digest;
    const Block out(digest.GetDigestSize());
    EXPECT_EQ(digest.GetDigestSize(), digest.Finish(out.Get(), length));
    EXPECT_EQ(DigestOf<Digest>(Bytes()), out.Content());
  });
}

// A digest of as many bytes as one likes.
class SizedDigest : public TMd5Digest {
 public:
  explicit SizedDigest(int count) : size(count) {}
  int Finish(unsigned char* digest, int) override {
    for (int i = 0; i < size; ++i) digest[i] = 0x11;
    return size;
  }
  int GetDigestSize() const override { return size; }

 private:
  int size;
};

// The five words and the block of 64 bytes are all that is touched.
template <typename Digest>
Sweep Transforms() {
  return Over([] {
    const GuardedBlock<unsigned int> state(5);
    const Block block(64);
    Digest().Transform(state.Get(), block.Get());
    EXPECT_NE(std::vector<unsigned int>(5), state.Content());
    EXPECT_EQ(Bytes(64), block.Content());
  });
}

// The generator's next bytes are those of a fresh one that was given the same.
Bytes Next(TDigestPrng& generator) {
  Bytes bytes(20);
  generator.Generate(bytes.data(), 20);
  return bytes;
}

void AddDigestRows(Table& table) {
  table.Row("KEST::TMessageDigest::Update(unsigned char const*, int)", Around(64, 128),
            [](bool buffered, bool given, int length) {
              if (length > kMuchData || (!given && length > 0)) return LeaveOut();
              TShaDigest digest;
              if (buffered) digest.Update(Counting(1).data(), 1);
              const Block data(Message(length));
              digest.Update(given ? data.Get() : nullptr, length);
              Bytes message = Counting(buffered ? 1 : 0);
              for (unsigned char byte : Message(length)) message.push_back(byte);
              EXPECT_EQ(DigestOf<TShaDigest>(message), DigestOf(digest));
            });
  table.Row("KEST::TMdXDigest::Finish(unsigned char*, int)", Finishes<TMd5Digest>());
  table.Row("KEST::TShaDigest::Finish(unsigned char*, int)", Finishes<TShaDigest>());
  table.Row("KEST::TMd4Digest::Transform(unsigned int*, unsigned char const*)",
            Transforms<TMd4Digest>());
  table.Row("KEST::TMd5Digest::Transform(unsigned int*, unsigned char const*)",
            Transforms<TMd5Digest>());
  table.Row("KEST::TShaDigest::Transform(unsigned int*, unsigned char const*)",
            Transforms<TShaDigest>());

  table.Row("KEST::THmac::THmac(KEST::TMessageDigest&, unsigned char const*, int)", Around(64),
            [](bool given, int keyLength) {
              // Keys of other lengths are refused unread.
              const bool taken = keyLength >= 0 && keyLength <= 64;
              if (!given && taken && keyLength != 0) return LeaveOut();
              TMd5Digest digest;
              const Block key(taken ? keyLength : 0), mac(16);
              THmac hmac(digest, given ? key.Get() : nullptr, keyLength);
              hmac.Update(nullptr, 0);
              EXPECT_EQ(taken ? 16 : 0, hmac.Finish(mac.Get(), 0));
              EXPECT_EQ(taken, mac.Content() != Bytes(16));
            });
  table.Row("KEST::THmac::Update(unsigned char const*, int)", Around(64),
            [](bool refused, int length) {
              if (length > kMuchData) return LeaveOut();
              TMd5Digest digest, other;
              THmac hmac(digest, nullptr, refused ? -1 : 0), expected(other, nullptr, 0);
              const Block data(Message(length)), mac(16), expectedMac(16);
              hmac.Update(data.Get(), length);
              if (length >= 0) expected.Update(data.Get(), length);
              EXPECT_EQ(refused ? 0 : 16, hmac.Finish(mac.Get(), 0));
              EXPECT_EQ(16, expected.Finish(expectedMac.Get(), 0));
              EXPECT_EQ(refused ? Bytes(16) : expectedMac.Content(), mac.Content());
            });
  table.Row("KEST::THmac::Finish(unsigned char*, int)", Around(16), [](bool refused, int length) {
    TMd5Digest digest;
    THmac hmac(digest, nullptr, refused ? -1 : 0);
    // Nothing is written by one that refused its key.
    const Block mac(refused ? 0 : 16);
    EXPECT_EQ(refused ? 0 : 16, hmac.Finish(mac.Get(), length));
  });

  table.Row("KEST::TDigestPrng::TDigestPrng(KEST::TMessageDigest&, unsigned char*, int)",
            Around(16), [](int size, bool digestsToo) {
              // The first of the three blocks is zeroed, whatever the digest's size is.
              if (size > kMuchData) return LeaveOut();
              TMd5Digest md5;
              SizedDigest sized(size);
              TMessageDigest& digest = digestsToo ? static_cast<TMessageDigest&>(sized) : md5;
              const Block buffers(3LL * size), out(16);
              TDigestPrng generator(digest, buffers.Get(), size);
              generator.Seed(nullptr, 0);
              generator.Generate(out.Get(), 16);
              const bool taken = digestsToo ? size > 0 : size == 16;
              EXPECT_EQ(taken, out.Content() != Bytes(16));
            });
  table.Row("KEST::TDigestPrng::Seed(unsigned char const*, int)", Around(64),
            [](bool given, int length) {
              if (length > kMuchData || (!given && length > 0)) return LeaveOut();
              TMd5Prng generator, expected;
              const Block data(Message(length));
              generator.Seed(given ? data.Get() : nullptr, length);
              if (length >= 0) expected.Seed(data.Get(), length);
              EXPECT_EQ(Next(expected), Next(generator));
            });
  table.Row("KEST::TDigestPrng::Generate(unsigned char*, int)", Around(16),
            [](bool given, int length) {
              if (length > kMuchData || (!given && length > 0)) return LeaveOut();
              TMd5Prng generator, expected;
              const Block out(length);
              generator.Generate(given ? out.Get() : nullptr, length);
              Bytes expectedBytes(out.Content().size() + 20);
              expected.Generate(expectedBytes.data(), static_cast<int>(expectedBytes.size()));
              Bytes bytes = out.Content();
              for (unsigned char byte : Next(generator)) bytes.push_back(byte);
              EXPECT_EQ(expectedBytes, bytes);
            });
  table.Row("KestSeedRandom", Around(64), [](bool started, bool given, int length) {
    if (length > kMuchData || (!given && length > 0)) return LeaveOut();
    if (!started) RandTerm();
    const Block data(Message(length));
    KestSeedRandom(given ? data.Get() : nullptr, length);
    EXPECT_TRUE(RandInit());
  });
  table.Row("KestGenerateRandom", Around(16), [](bool started, bool given, int length) {
    if (length > kMuchData || (!given && length > 0)) return LeaveOut();
    if (!started) RandTerm();
    // Without a generator nothing is written.
    const Block out(started ? length : 0);
    KestGenerateRandom(given ? out.Get() : nullptr, length);
    EXPECT_TRUE(RandInit());
  });

  table.Row("KEST::TInetChecksum::Update(unsigned char const*, int)", Around(2),
            [](bool odd, bool given, int length) {
              // After an odd number of bytes one is read for a length of 0, too.
              const int count = odd && length == 0 ? 1 : length;
              if (count > kMuchData || (!given && count > 0)) return LeaveOut();
              TInetChecksum checksum;
              if (odd) checksum.Update(Counting(1).data(), 1);
              const Block data(count);
              checksum.Update(given ? data.Get() : nullptr, length);
              EXPECT_EQ(odd ? 0xFFFF - 0x300 : 0xFFFF, checksum.Finish());
            });
  table.Row("KEST::TInetChecksum::SetCurrent(unsigned short, int)",
            [](unsigned short sum, int length) {
              TInetChecksum checksum;
              checksum.SetCurrent(sum, length);
              EXPECT_EQ(sum, checksum.GetCurrent());
              const unsigned char bytes[] = {0, 0};
              checksum.Update(bytes, 2);
              EXPECT_EQ(sum, checksum.Finish());
            });
  table.Row("KestComputeChecksum", Around(2), [](bool given, int length) {
    if (length > kMuchData || (!given && length > 0)) {
      return LeaveOut();
    }
    const Block data(length);
    EXPECT_EQ(0xFFFF, KestComputeChecksum(given ? data.Get() : nullptr, length));
  });

  table.Row("KestBerDecode", Around(5), [](bool given, bool longForm, int length) {
    // 02 03 .. .. .., or the same with its length in four octets.
    const Bytes element = longForm ? FromHex("028400000003010203") : FromHex("0203010203");
    const int count = static_cast<int>(element.size());
    // What is behind the element is not read.
    const int there = std::clamp(length, 0, count);
    if (!given && there > 1) return LeaveOut();
    const Block data(Bytes(element.begin(), element.begin() + there));
    SBerItem item = {9, 9, data.Get()};
    EXPECT_EQ(there == count ? count : 0,
              KestBerDecode(given ? data.Get() : nullptr, length, &item));
    EXPECT_EQ(there == count ? 3 : 0, item.length);
    EXPECT_EQ(there == count ? data.Get() + count - 3 : nullptr, item.value);
  });
  table.Row("KestBerEncode", Around(5, 0x80, 1 << 24), [](bool given, int length, int size) {
    const bool encodable = (length >= 0 && length < 1 << 24) || length == INT_MAX;
    const int content = length == INT_MAX || !encodable ? 0 : length;
    const int header = content < 0x80 ? 2 : content < 0x10000 ? 3 : 4;
    const bool fits = encodable && (size < 0 || size >= header + content);
    const int written = !fits ? 0 : given ? header + content : header;
    const Block out(written), value(given && fits ? content : 0);
    const SBerItem item = {4, length, given ? value.Get() : nullptr};
    EXPECT_EQ(written, KestBerEncode(out.Get(), size, &item));
    if (written != 0) {
      EXPECT_EQ(4, out.Get()[0]);
    }
  });
  table.Row("KestBinToBase64", Around(3, 5, 1610612733), [](bool given, int length, int size) {
    const long long needed = length < 0 ? INT_MAX : (length + 2LL) / 3 * 4;
    const bool fits = size > needed;
    if (fits && needed > kMuchData) return LeaveOut();
    if (!given && fits && length != 0) return LeaveOut();
    // Data that would not fit is not read.
    const Block data(fits ? length : 0);
    const Units16 text(fits ? needed + 1 : 0);
    EXPECT_EQ(fits ? needed : 0,
              KestBinToBase64(given ? data.Get() : nullptr, length, text.Get(), size));
    if (fits) {
      EXPECT_EQ(0, text.Content().back());
    }
  });
  table.Row("KestBase64ToBin", Around(3, 6), [](bool given, int size) {
    // Eight letters, whose groups are written as long as they fit.
    const Units16 text(std::u16string(u"AQIDBAUG", 9));
    const Block out(!given || size < 3 ? 0 : size < 6 ? 3 : 6);
    EXPECT_EQ(given && size >= 6 ? 6 : 0,
              KestBase64ToBin(given ? text.Get() : nullptr, out.Get(), size));
    const Bytes numbers = {1, 2, 3, 4, 5, 6};
    const size_t count = out.Content().size();
    EXPECT_TRUE(std::equal(numbers.begin(), numbers.begin() + static_cast<int>(count), out.Get()));
  });
}

const Table kDigest(AddDigestRows);

TEST(ArgumentSweep, Digest) { kDigest.Run(); }

}  // namespace

}  // namespace kest_test
