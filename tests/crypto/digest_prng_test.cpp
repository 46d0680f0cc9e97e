#include "crypto/digest_checks.h"

#include <ctype.h>

#include <algorithm>
#include <sstream>

namespace {

using namespace kest_test;
using KEST::TMd5Digest;
using KEST::TMd5Prng;
using KEST::TShaDigest;

// A generator over another digest, made as a host would make it.
class TShaPrng : public KEST::TDigestPrng {
 public:
  TShaPrng() : TDigestPrng(sha, buffers, 20) {}

 private:
  TShaDigest sha;
  unsigned char buffers[60];
};

Bytes Generated(KEST::TDigestPrng& prng, int length) {
  Bytes out(static_cast<size_t>(length));
  prng.Generate(out.data(), length);
  return out;
}

// A script is a list of words: a number generates so many bytes, "-" seeds with nothing, any other
// word seeds with itself. The result is all that was generated.
template <typename Prng>
Bytes OutputOf(const char* script) {
  Prng prng;
  Bytes all;
  std::istringstream words(script);
  for (std::string word; words >> word;) {
    if (isdigit(word[0])) {
      const Bytes out = Generated(prng, atoi(word.c_str()));
      all.insert(all.end(), out.begin(), out.end());
    } else {
      const Bytes seed = word == "-" ? Bytes() : ToBytes(word.c_str());
      prng.Seed(seed.data(), static_cast<int>(seed.size()));
    }
  }
  return all;
}

struct Row {
  const char* script;
  const char* bytes;
};

// Worked out apart, with Python's hashlib: 4ae71336... is the MD5 of 16 zero bytes, 24311d9a...
// that of 16 bytes of 1, bf79d275... etc. their continuation.
constexpr Row kMd5Rows[] = {
    {"48",
     "4ae71336e44bf9bf79d2752e234818a524311d9abc4077123c2c9a167afbe7541cc08ab0e99fd08dfd89e0f1"
     "bcfe0b01"},
    {"7 first 16", "4ae71336e44bf9f135b4807ca3ae5e57267e25cab377ac"},
    {"first 37", "f135b4807ca3ae5e57267e25cab377ac1a8a972aec3ab49d4b14dd2932723d018e65034c5d"},
    {"first second 37",
     "b6e6b8dd63e513f54b9c2fa5c4ad7a2eba3324d0bbe5a68332bdf519126e2d7aea21997121"},
    {"first 5 second 32",
     "f135b4807ce5a451244fab4f4fbf49a43d8867d3e601d51e750fd1fe1b7305e800f2ec1108"},
    {"first 5 second third 0 17 - 16",
     "f135b4807c7d8052755e015d5c64a44972f8df2607b17f6eb53b5266f5c3ca6788def9429cc9"},
};
constexpr Row kShaRows[] = {
    {"60",
     "6768033e216468247bd031a0a2d9876d79818f8f2d7a952e559fd7862993bd047e4fdb56f175d04b003ae026f6ab"
     "9e0b2af4a8d7ffbe01eb9b81c75f"},
    {"7 first 20", "6768033e2164689bde81f857cbd7e27caed548ed36f57ce4307f0b"},
    {"first 45",
     "9bde81f857cbd7e27caed548ed36f57ce4307f0b268c022d8354396d0810d52eb618c49d93622e8415e8ddeaf0"},
    {"first second 45",
     "3ccb8524ab12719c071bbbf299c44fd09aee7e3070260c8fcb160c4b6c1a094a055cc586dc0529cd30384ad9c1"},
    {"first 5 second 40",
     "9bde81f857b69e66eac937f6d75400a0f1c391234958113246d36b54d1c33c33682aca95bc3e09961b88ae16b0"},
    {"first 5 second third 0 21 - 20",
     "9bde81f857758075eb2bb06c0a67c5c13660fc2717424e7345631ec302870767dc272ecf5f0abb87934c83b86a"
     "78"},
};

// The same source. Columns: script, digest of what it generates (MD5 or SHA-1, as the generator).
constexpr Row kLongMd5Rows[] = {
    {"100000", "263dafcfea5ec15e20cf50b57b35b20e"},
    {"first 100000", "6d7411ea62e238ab6f425cc982ba9e42"},
    {"first second 100000", "899a105fd66603fbef49a9d03c80c5ef"},
};
constexpr Row kLongShaRows[] = {
    {"100000", "b26ea1dccb7c0fed42914498a49d754e06050253"},
    {"first 100000", "a7d48bc93983e54459c23c08547aedb6cb3ab12f"},
    {"first second 100000", "42c5b170ae279802cea1f7d3b09a93770f8b5b25"},
};

TEST(DigestPrng, GivesTheExpectedBytes) {
  for (const Row& row : kMd5Rows) {
    EXPECT_EQ(row.bytes, Hex(OutputOf<TMd5Prng>(row.script))) << row.script;
  }
  for (const Row& row : kShaRows) {
    EXPECT_EQ(row.bytes, Hex(OutputOf<TShaPrng>(row.script))) << row.script;
  }
}

TEST(DigestPrng, GivesTheExpectedBytesForLong) {
  for (const Row& row : kLongMd5Rows) {
    EXPECT_EQ(row.bytes, Hex(DigestOf<TMd5Digest>(OutputOf<TMd5Prng>(row.script)))) << row.script;
  }
  for (const Row& row : kLongShaRows) {
    EXPECT_EQ(row.bytes, Hex(DigestOf<TShaDigest>(OutputOf<TShaPrng>(row.script)))) << row.script;
  }
}

TEST(DigestPrng, UnseededOutputIsFixed) {
  TMd5Prng prng;
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(Bytes(16, 0))), Hex(Generated(prng, 16)));
  // The step from sixteen zeros touches every byte.
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(Bytes(16, 1))), Hex(Generated(prng, 16)));
}

TEST(DigestPrng, OutputDoesNotDependOnHowItIsAskedFor) {
  const Bytes whole = OutputOf<TMd5Prng>("seed 200");
  for (int piece = 1; piece <= 50; ++piece) {
    TMd5Prng prng;
    prng.Seed(ToBytes("seed").data(), 4);
    Bytes all;
    while (all.size() < whole.size()) {
      const int left = static_cast<int>(whole.size() - all.size());
      const Bytes out = Generated(prng, std::min(piece, left));
      all.insert(all.end(), out.begin(), out.end());
      prng.Generate(nullptr, 0);
    }
    ASSERT_EQ(Hex(whole), Hex(all)) << piece;
  }
}

TEST(DigestPrng, SameSeedsGiveTheSameStream) {
  EXPECT_EQ(OutputOf<TMd5Prng>("one two 100 three 100"),
            OutputOf<TMd5Prng>("one two 100 three 100"));
  EXPECT_NE(OutputOf<TMd5Prng>("one two 100"), OutputOf<TMd5Prng>("two one 100"));
}

// A generator whose fields can be seen and set, over MD5 unless told otherwise.
class TProbe : public KEST::TDigestPrng {
 public:
  explicit TProbe(int digestSize = 16) : TProbe(md5, digestSize) {}
  TProbe(KEST::TMessageDigest& source, int digestSize)
      : TDigestPrng(source, Filled(area), digestSize) {}

  using TDigestPrng::available;
  using TDigestPrng::counter;
  using TDigestPrng::digest;
  using TDigestPrng::increment;
  using TDigestPrng::output;
  using TDigestPrng::seedCountdown;
  using TDigestPrng::seedPending;
  using TDigestPrng::size;

  std::string Counter() const { return Hex(counter, 16); }
  void SetCounter(const char* hex) { SetBlock(counter, hex); }
  void SetIncrement(const char* hex) { SetBlock(increment, hex); }
  Bytes Area() const { return {area, area + sizeof(area)}; }

  unsigned char area[96];
  TMd5Digest md5;

 private:
  static unsigned char* Filled(unsigned char (&bytes)[96]) {
    memset(bytes, 0xaa, sizeof(bytes));
    return bytes;
  }
  static void SetBlock(unsigned char* block, const char* hex) {
    for (int i = 0; i < 16; ++i) {
      block[i] = static_cast<unsigned char>(std::stoi(std::string(hex + 2 * i, 2), nullptr, 16));
    }
  }
};

TEST(DigestPrng, StartsWithAZeroCounterAndTheOtherBlocksAsTheyWere) {
  const TProbe probe;
  EXPECT_EQ(&probe.md5, probe.digest);
  EXPECT_EQ(16, probe.size);
  EXPECT_EQ(0, probe.seedPending);
  EXPECT_EQ(2, probe.seedCountdown);
  EXPECT_EQ(0, probe.available);
  EXPECT_EQ(probe.area, probe.counter);
  EXPECT_EQ(probe.area + 16, probe.increment);
  EXPECT_EQ(probe.area + 32, probe.output);
  Bytes expected(96, 0xaa);
  std::fill_n(expected.begin(), 16, static_cast<unsigned char>(0));
  EXPECT_EQ(expected, probe.Area());
}

TEST(DigestPrng, FirstSeedMakesTheOddIncrement) {
  TProbe probe;
  probe.Seed(ToBytes("any").data(), 3);
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427f", Hex(probe.increment, 16));
  EXPECT_EQ(1, probe.seedCountdown);
  EXPECT_EQ(1, probe.seedPending);
  EXPECT_EQ(std::string(32, '0'), probe.Counter()) << "only the next request folds the seed in";
  probe.SetIncrement("00000000000000000000000000000002");
  probe.Seed(ToBytes("any").data(), 3);
  EXPECT_EQ("00000000000000000000000000000002", Hex(probe.increment, 16)) << "made only once";
  EXPECT_EQ(0, probe.seedCountdown);
  probe.Seed(ToBytes("any").data(), 3);
  EXPECT_EQ(0, probe.seedCountdown);
}

TEST(DigestPrng, SecondSeedFoldsTheCounterInUnlessSeedIsPending) {
  TProbe pending;
  pending.Seed(ToBytes("a").data(), 1);
  pending.SetCounter("00112233445566778899aabbccddeeff");
  pending.Seed(ToBytes("b").data(), 1);
  pending.Generate(nullptr, 0);
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(ToBytes("ab"))), pending.Counter());

  for (int further = 0; further < 2; ++further) {
    pending.SetCounter("61626364656667686162636465666768");
    pending.Seed(ToBytes("c").data(), 1);
    pending.Seed(ToBytes("d").data(), 1);
    pending.Generate(nullptr, 0);
    EXPECT_EQ(Hex(DigestOf<TMd5Digest>(ToBytes("abcdefghabcdefghcd"))), pending.Counter());
  }
}

TEST(DigestPrng, GenerateOfNothingOnlyFoldsPendingSeedIn) {
  TProbe probe;
  Generated(probe, 5);
  const Bytes before = probe.Area();
  probe.Generate(nullptr, 0);
  EXPECT_EQ(before, probe.Area());
  EXPECT_EQ(11, probe.available);

  probe.Seed(ToBytes("a").data(), 1);
  EXPECT_EQ(11, probe.available);
  probe.Generate(nullptr, 0);
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(ToBytes("a"))), probe.Counter());
  EXPECT_EQ(0, probe.seedPending);
  EXPECT_EQ(0, probe.available) << "what was left of the old block is dropped";
}

TEST(DigestPrng, SeedOfNothingCountsAsASeed) {
  TProbe probe;
  probe.Seed(nullptr, 0);
  EXPECT_EQ(1, probe.seedCountdown);
  EXPECT_EQ(1, probe.seedPending);
  probe.Generate(nullptr, 0);
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", probe.Counter());
}

TEST(DigestPrng, HandsOutEachBlockFromItsFront) {
  TProbe probe;
  const Bytes first = Generated(probe, 10);
  EXPECT_EQ(6, probe.available);
  EXPECT_EQ(Hex(probe.output, 10), Hex(first));
  const std::string rest = Hex(probe.output + 10, 6);
  EXPECT_EQ(rest, Hex(Generated(probe, 6))) << "exactly what is left takes no new block";
  EXPECT_EQ(0, probe.available);
  EXPECT_EQ(std::string("01010101010101010101010101010101"), probe.Counter());
}

// The carry goes on past a byte that was 0 and is now 1, and not past one that was 255.
TEST(DigestPrng, BeforeTheSecondSeedTheCounterStepsOddly) {
  const struct {
    const char* before;
    const char* after;
  } rows[] = {
      {"00000000000000000000000000000000", "01010101010101010101010101010101"},
      {"01010101010101010101010101010101", "01010101010101010101010101010102"},
      {"000000000000000000000000000000ff", "00000000000000000000000000000000"},
      {"00000000000000000000000000000500", "00000000000000000000000000000601"},
      {"000000000000000000000000000005ff", "00000000000000000000000000000500"},
      {"0000000000000000000000000007ff00", "00000000000000000000000000070001"},
      {"00000000000000000000000007000000", "00000000000000000000000008010101"},
      {"09000000000000000000000000000000", "0a010101010101010101010101010101"},
      {"ffffffffffffffffffffffffffffffff", "ffffffffffffffffffffffffffffff00"},
  };
  for (int seeds = 0; seeds < 2; ++seeds) {
    for (const auto& row : rows) {
      TProbe probe;
      if (seeds == 1) probe.Seed(nullptr, 0);
      probe.Generate(nullptr, 0);
      probe.SetCounter(row.before);
      Generated(probe, 1);
      EXPECT_EQ(row.after, probe.Counter()) << row.before << " after " << seeds << " seeds";
    }
  }
}

TEST(DigestPrng, FromTheSecondSeedOnTheCounterGrowsByTheIncrement) {
  const struct {
    const char* before;
    const char* increment;
    const char* after;
  } rows[] = {
      {"00000000000000000000000000000000", "d41d8cd98f00b204e9800998ecf8427f",
       "d41d8cd98f00b204e9800998ecf8427f"},
      {"000000000000000000000000000000ff", "00000000000000000000000000000001",
       "00000000000000000000000000000100"},
      {"00ffffffffffffffffffffffffffffff", "00000000000000000000000000000001",
       "01000000000000000000000000000000"},
      {"ffffffffffffffffffffffffffffffff", "ffffffffffffffffffffffffffffffff",
       "fffffffffffffffffffffffffffffffe"},
      {"80000000000000000000000000000000", "80000000000000000000000000000001",
       "00000000000000000000000000000001"},
  };
  for (const auto& row : rows) {
    TProbe probe;
    probe.Seed(nullptr, 0);
    probe.Seed(nullptr, 0);
    probe.Generate(nullptr, 0);
    probe.SetCounter(row.before);
    probe.SetIncrement(row.increment);
    Generated(probe, 1);
    EXPECT_EQ(row.after, probe.Counter()) << row.before << " + " << row.increment;
  }
}

TEST(DigestPrng, LengthsBelowZeroDoNothing) {
  for (int length : {-1, -16, INT_MIN}) {
    TProbe probe;
    const Bytes before = probe.Area();
    unsigned char byte = 0x55;
    probe.Seed(&byte, length);
    EXPECT_EQ(2, probe.seedCountdown);
    EXPECT_EQ(0, probe.seedPending);
    probe.Generate(&byte, length);
    EXPECT_EQ(before, probe.Area());
    EXPECT_EQ(0x55, byte);

    probe.Seed(&byte, 1);
    probe.Generate(&byte, length);
    EXPECT_EQ(1, probe.seedPending) << "not even pending seed is folded in";
  }
}

// Only the constructor writes, and only the bytes of the counter.
TEST(DigestPrng, RefusesASizeThatIsNotItsDigests) {
  for (int size : {INT_MIN, -16, -1, 0, 1, 15, 17, 20}) {
    SCOPED_TRACE(size);
    TProbe probe(size);
    Bytes expected(96, 0xaa);
    std::fill_n(expected.begin(), std::max(size, 0), static_cast<unsigned char>(0));
    unsigned char out[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    probe.Seed(out, 8);
    probe.Generate(out, 8);
    probe.Seed(out, 8);
    probe.Generate(out, 8);
    EXPECT_EQ(expected, probe.Area());
    EXPECT_EQ("0102030405060708", Hex(out, 8));
    EXPECT_EQ(2, probe.seedCountdown);
  }
}

// A size of 0 would never yield a byte, even when the digest agrees.
TEST(DigestPrng, RefusesADigestOfNoBytes) {
  class TEmptyDigest : public TMd5Digest {
   public:
    int GetDigestSize() const override { return 0; }
  };
  TEmptyDigest empty;
  TProbe probe(empty, 0);
  unsigned char out = 0x55;
  probe.Seed(&out, 1);
  probe.Generate(&out, 1);
  EXPECT_EQ(0x55, out);
  EXPECT_EQ(Bytes(96, 0xaa), probe.Area());
}

TEST(DigestPrng, IsNeitherCopiedNorVirtual) {
  static_assert(!std::is_copy_constructible_v<TMd5Prng> && !std::is_copy_assignable_v<TMd5Prng>);
  static_assert(!std::is_copy_constructible_v<KEST::TDigestPrng>);
  static_assert(!std::is_copy_assignable_v<KEST::TDigestPrng>);
  static_assert(!std::is_polymorphic_v<KEST::TDigestPrng> && !std::is_polymorphic_v<TMd5Prng>);
}

// The rules again, plainly: the bytes still to come are a queue, the counter a number in base 256.
template <typename Digest>
class TModel {
 public:
  explicit TModel(size_t size) : counter(size, 0) {}

  void Seed(const Bytes& data) {
    ++seeds;
    if (seeds >= 2 && !isPending) pending = counter;
    pending.insert(pending.end(), data.begin(), data.end());
    isPending = true;
  }

  Bytes Generate(int length) {
    if (isPending) {
      counter = DigestOf<Digest>(pending);
      pending.clear();
      queue.clear();
      isPending = false;
    }
    Bytes out;
    for (int i = 0; i < length; ++i) {
      if (queue.empty()) Refill();
      out.push_back(queue.front());
      queue.erase(queue.begin());
    }
    return out;
  }

 private:
  void Refill() {
    queue = DigestOf<Digest>(counter);
    size_t i = counter.size();
    if (seeds < 2) {
      bool wasZero = true;
      while (wasZero && i-- > 0) {
        wasZero = counter[i] == 0;
        counter[i] = static_cast<unsigned char>((counter[i] + 1) % 256);
      }
      return;
    }
    Bytes step = DigestOf<Digest>(Bytes());
    step.back() |= 1;
    for (int carry = 0; i-- > 0;) {
      const int sum = counter[i] + step[i] + carry;
      counter[i] = static_cast<unsigned char>(sum % 256);
      carry = sum / 256;
    }
  }

  Bytes counter, pending, queue;
  int seeds = 0;
  bool isPending = false;
};

template <typename Prng, typename Digest>
void RunAgainstTheModel(int size) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < 300; ++n) {
    Prng prng;
    TModel<Digest> model(static_cast<size_t>(size));
    const int seedOdds = random.Between(1, 8);
    for (int call = 0; call < 30; ++call) {
      if (random.Between(0, seedOdds) == 0) {
        const Bytes seed = random.Bytes(random.Between(0, 80));
        prng.Seed(seed.data(), static_cast<int>(seed.size()));
        model.Seed(seed);
      } else {
        const int length = random.Between(0, call % 10 == 0 ? 500 : 40);
        ASSERT_EQ(Hex(model.Generate(length)), Hex(Generated(prng, length))) << n << '/' << call;
      }
    }
  }
}

TEST(DigestPrng, MatchesTheModelForRandomCalls) {
  RunAgainstTheModel<TMd5Prng, TMd5Digest>(16);
  RunAgainstTheModel<TShaPrng, TShaDigest>(20);
}

}  // namespace
