// The generators against the description of their counter, each over any digest: one on its own,
// TMd5Prng, and that of the process.

#include <string.h>

#include <variant>

#include "fuzz/steps.h"
#include "kest/digest.h"

namespace {

using KEST::TMessageDigest;
using kest_fuzz::Bytes;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;

constexpr int kMostBytes = 70;  // of one call

template <typename TDigest>
Bytes DigestOf(const Bytes& message) {
  TDigest digest;
  Bytes result(static_cast<size_t>(digest.GetDigestSize()));
  digest.Update(message.data(), static_cast<int>(message.size()));
  digest.Finish(result.data(), 0);
  return result;
}

class Model {
 public:
  Model(Bytes (*function)(const Bytes&), size_t digestSize)
      : digestOf(function), counter(digestSize) {}

  void Seed(const Bytes& material) {
    // Until the second call the counter does not come before the material.
    if (seeds < 2) ++seeds;
    if (seeds == 2 && !pending) seed = counter;
    pending = true;
    seed.insert(seed.end(), material.begin(), material.end());
  }

  Bytes Generate(size_t count) {
    if (pending) {
      counter = digestOf(seed);
      seed.clear();
      output.clear();
      pending = false;
    }
    while (output.size() < count) {
      const Bytes block = digestOf(counter);
      output.insert(output.end(), block.begin(), block.end());
      Advance();
    }
    const auto end = output.begin() + static_cast<std::ptrdiff_t>(count);
    const Bytes generated(output.begin(), end);
    output.erase(output.begin(), end);
    return generated;
  }

 private:
  // By the digest of nothing, made odd, or by one, where the carry comes a step early.
  void Advance() {
    if (seeds < 2) {
      for (size_t i = counter.size(); i-- > 0 && counter[i]++ == 0;) continue;
      return;
    }
    Bytes increment = digestOf({});
    increment.back() |= 1;
    unsigned int carry = 0;
    for (size_t i = counter.size(); i-- > 0; carry >>= 8) {
      carry += counter[i] + static_cast<unsigned int>(increment[i]);
      counter[i] = static_cast<unsigned char>(carry);
    }
  }

  Bytes (*digestOf)(const Bytes&);
  Bytes counter, seed, output;
  int seeds = 0;
  bool pending = false;
};

class Generators {
 public:
  Generators(StepInput& in, Memory& all)
      : memory(all),
        kind(in.Below(3)),
        size(in.Below(4) != 0 ? DigestSize() : in.Number(22)),
        buffers(size > 0 && size <= 24 ? 3 * static_cast<size_t>(size) : 0),
        own(Digest(), buffers.data(), buffers.empty() ? -1 : size),
        ownModel(MakeModel()) {}
  ~Generators() { KEST::RandTerm(); }

  void Step(int step, StepInput& in) {
    const int length = in.Number(kMostBytes);
    switch (step % 7) {
      case 0:
        return Seed(own, size == DigestSize() ? &ownModel : nullptr, length, in);
      case 1:
        return Generate(own, size == DigestSize() ? &ownModel : nullptr, length);
      case 2:
        return Seed(md5Prng, &md5Model, length, in);
      case 3:
        return Generate(md5Prng, &md5Model, length);
      case 4:
        return Seed(s_process, started ? &processModel : nullptr, length, in);
      case 5:
        return Generate(s_process, started ? &processModel : nullptr, length);
      default:
        return StartOrStop(in.Bool());
    }
  }

 private:
  // The calls for the process as those of a generator.
  struct SProcess {
    void Seed(const unsigned char* data, int length) { KestSeedRandom(data, length); }
    void Generate(unsigned char* out, int length) { KestGenerateRandom(out, length); }
  };
  static inline SProcess s_process;

  int DigestSize() const { return kind == 2 ? 20 : 16; }
  TMessageDigest& Digest() {
    TMessageDigest* const digests[] = {&md4, &md5, &sha};
    return *digests[kind];
  }
  Model MakeModel() const {
    Bytes (*const functions[])(const Bytes&) = {
        DigestOf<KEST::TMd4Digest>, DigestOf<KEST::TMd5Digest>, DigestOf<KEST::TShaDigest>};
    return Model(functions[kind], static_cast<size_t>(DigestSize()));
  }

  // A generator without a model does nothing.
  template <typename TGenerator>
  void Seed(TGenerator& generator, Model* model, int length, StepInput& in) {
    static kest_fuzz::Guarded<unsigned char, kMostBytes + 2> room;
    if (length > kMostBytes + 2) length = INT_MIN;
    Bytes bytes(static_cast<size_t>(std::max(length, 0)));
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = i < 4 ? in.Byte() : bytes[i - 4];
    generator.Seed(room.Copy(bytes.data(), bytes.size()), length);
    if (model != nullptr && length >= 0) model->Seed(bytes);
  }

  template <typename TGenerator>
  void Generate(TGenerator& generator, Model* model, int length) {
    static kest_fuzz::Guarded<unsigned char, kMostBytes + 2> room;
    if (length > kMostBytes + 2) length = INT_MIN;
    const size_t count = static_cast<size_t>(std::max(length, 0));
    unsigned char* out = room.Take(count);
    memset(out, 0xEE, count);
    generator.Generate(out, length);
    const bool works = model != nullptr && length >= 0;
    const Bytes expected = works ? model->Generate(count) : Bytes(count, 0xEE);
    FUZZ_CHECK(std::equal(expected.begin(), expected.end(), out));
  }

  // While there is a generator it is kept.
  void StartOrStop(bool start) {
    if (!start) {
      KEST::RandTerm();
      started = false;
      return;
    }
    const bool done = KEST::RandInit();
    FUZZ_CHECK(done == (started || !memory.Refused()));
    if (done && !started) processModel = Model(DigestOf<KEST::TMd5Digest>, 16);
    started = done;
  }

  Memory& memory;
  const int kind;
  const int size;
  KEST::TMd4Digest md4;
  KEST::TMd5Digest md5;
  KEST::TShaDigest sha;
  Bytes buffers;
  KEST::TDigestPrng own;
  Model ownModel;
  KEST::TMd5Prng md5Prng;
  Model md5Model = Model(DigestOf<KEST::TMd5Digest>, 16);
  Model processModel = md5Model;
  bool started = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Generators>(data, size, 40);
}
