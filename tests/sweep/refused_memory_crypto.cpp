// Operations of kest/crypto.h and kest/digest.h that ask for memory.

#include "kest/crypto.h"

#include <optional>

#include "crypto/rsa_checks.h"
#include "crypto/rsa_keys.h"
#include "kest/digest.h"
#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

using Result = bool (*)(TBigInt& r, const TBigInt& a, const TBigInt& b);

// A result computed from 100 and 7.
auto Computed(Result compute) {
  return [compute](Attempts& attempts) {
    const TBigInt a(100), b(7);
    TBigInt r;
    attempts([&] {
      const bool done = compute(r, a, b);
      return Said(done, r.ToInt());
    });
  };
}

template <typename... Args>
auto Number(Args... args) {
  return [=](Attempts& attempts) {
    attempts([&] {
      const TBigInt made(args...);
      return Said(made.ToInt());
    });
  };
}

const unsigned char kBytes[] = {1, 0};

// Without and with a working block on the heap.
const RsaKey& kShortKey = kRsaKeys[0];
const RsaKey& kLongKey = kRsaKeys[8];

// An operation on a cipher with this key and the block that it is to work on; the result is the
// length of the message.
template <typename Operation>
auto Rsa(const RsaKey& key, TCipher::ECipherOp way, Operation operation) {
  return [&key, way, operation](Attempts& attempts) {
    RandInit();
    {
      RsaCipher cipher(way, FromHex(key.modulus), FromHex(key.exponent));
      Bytes data;
      attempts([&] { data = FromHex(key.signature); },
               [&] { return Said(operation(cipher, data)); });
    }
    RandTerm();
  };
}

// A new cipher that loads a key.
template <typename Operation>
auto Loads(Operation load) {
  return [load](Attempts& attempts) {
    std::optional<TRsaPublicCipher> cipher;
    const Bytes n = FromHex(kShortKey.modulus), e = FromHex(kShortKey.exponent);
    attempts([&] { cipher.emplace(kEncrypt); }, [&] { return Said(load(*cipher, n, e)); });
  };
}

}  // namespace

std::vector<RefusedMemoryRow> CryptoRows() {
  return {
      {{"KEST::RandInit()"},
       "true",
       {"false"},
       [](Attempts& attempts) {
         attempts(RandTerm, [] { return Said(RandInit()); });
         RandTerm();
       }},

      {{"KEST::TBigInt::TBigInt(int)"}, "5", {"0"}, Number(5)},
      {{"KEST::TBigInt::TBigInt(unsigned short const*)"}, "26", {"0"}, Number(KEST_TEXT("1A"))},
      {{"KEST::TBigInt::TBigInt(unsigned char const*, int)"}, "256", {"0"}, Number(kBytes, 2)},
      {{"KEST::TBigInt::TBigInt(KEST::TBigInt const&)"},
       "5",
       {"0"},
       [](Attempts& attempts) {
         const TBigInt five(5);
         attempts([&] { return Said(TBigInt(five).ToInt()); });
       }},
      {{"KEST::TBigInt::operator=(KEST::TBigInt const&)"},
       "5",
       {"0"},
       [](Attempts& attempts) {
         const TBigInt five(5);
         TBigInt r;
         attempts([&] {
           r = five;
           return Said(r.ToInt());
         });
       }},
      {{"KEST::TBigInt::ToString() const"},
       "1F",
       {""},
       [](Attempts& attempts) {
         const TBigInt number(31);
         attempts([&] { return Said(number.ToString()); });
       }},
      {{"KEST::TBigInt::AdjustBuffer(int, bool)"},
       "true 9 5",
       {"false 1 5"},
       [](Attempts& attempts) {
         std::optional<TBigInt> r;
         attempts([&] { r.emplace(5); },
                  [&] {
                    const bool done = r->AdjustBuffer(9, true);
                    return Said(done, r->GetLength(), r->ToInt());
                  });
       }},
      {{"KEST::TBigInt::Add(KEST::TBigInt&, KEST::TBigInt const&, KEST::TBigInt const&)"},
       "true 107",
       {"false 0"},
       Computed(TBigInt::Add)},
      {{"KEST::TBigInt::Sub(KEST::TBigInt&, KEST::TBigInt const&, KEST::TBigInt const&)"},
       "true 93",
       {"false 0"},
       Computed(TBigInt::Sub)},
      {{"KEST::TBigInt::Mul(KEST::TBigInt&, KEST::TBigInt const&, KEST::TBigInt const&)"},
       "true 700",
       {"false 0"},
       Computed(TBigInt::Mul)},
      {{"KEST::TBigInt::Div(KEST::TBigInt&, KEST::TBigInt&, KEST::TBigInt const&, "
        "KEST::TBigInt const&)"},
       "true 14",
       {"false 0", "false 0", "false 14"},
       Computed([](TBigInt& r, const TBigInt& a, const TBigInt& b) {
         TBigInt rest;
         return TBigInt::Div(r, rest, a, b);
       })},
      {{"KEST::TBigInt::MulMod(KEST::TBigInt&, KEST::TBigInt const&, KEST::TBigInt const&, "
        "KEST::TBigInt const&)"},
       "true 4",
       {"false 0"},
       Computed([](TBigInt& r, const TBigInt& a, const TBigInt& b) {
         return TBigInt::MulMod(r, a, a, b);
       })},
      {{"KEST::TBigInt::ExpMod(KEST::TBigInt&, KEST::TBigInt const&, KEST::TBigInt const&, "
        "KEST::TBigInt const&)"},
       "true 43",
       {"true 0"},
       Computed([](TBigInt& r, const TBigInt& a, const TBigInt& b) {
         return TBigInt::ExpMod(r, b, b, a) && r.GetLength() < 2;
       })},
      {{"KEST::TBigInt::Shl(KEST::TBigInt&, KEST::TBigInt const&, int)"},
       "true 800",
       {"false 0"},
       Computed(
           [](TBigInt& r, const TBigInt& a, const TBigInt&) { return TBigInt::Shl(r, a, 3); })},
      {{"KEST::TBigInt::Shr(KEST::TBigInt&, KEST::TBigInt const&, int)"},
       "true 12",
       {"false 0"},
       Computed(
           [](TBigInt& r, const TBigInt& a, const TBigInt&) { return TBigInt::Shr(r, a, 3); })},

      {{"KEST::TRsaPublicCipher::TRsaPublicCipher(KEST::TCipher::ECipherOp, unsigned char const*, "
        "int, unsigned char const*, int)"},
       "35",
       {"0"},
       [](Attempts& attempts) {
         Bytes data;
         attempts([&] { data = FromHex(kShortKey.signature); },
                  [&] {
                    RsaCipher cipher(kDecrypt, FromHex(kShortKey.modulus),
                                     FromHex(kShortKey.exponent));
                    return Said(cipher.DecryptData(data.data(), Size(data), true));
                  });
       }},
      {{"KEST::TRsaPublicCipher::Construct(unsigned char const*, int, unsigned char const*, int)"},
       "true",
       {"false"},
       Loads([](TRsaPublicCipher& cipher, const Bytes& n, const Bytes& e) {
         return cipher.Construct(n.data(), Size(n), e.data(), Size(e));
       })},
      {{"KEST::TRsaPublicCipher::BerInit(unsigned char const*, int)"},
       "94",
       {"0"},
       Loads([](TRsaPublicCipher& cipher, const Bytes& n, const Bytes& e) {
         const Bytes length = {2, static_cast<unsigned char>(e.size())};
         const Bytes ber = FromHex(kShortKey.header) + n + length + e;
         return cipher.BerInit(ber.data(), Size(ber));
       })},
      {{"KEST::TRsaPublicCipher::DecryptData(unsigned char*, int, bool)"},
       "35",
       {"0"},
       Rsa(kShortKey, kDecrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             return cipher.DecryptData(data.data(), Size(data), true);
           })},
      {{"KEST::TRsaPublicCipher::ProcessData(unsigned char*, int, bool)"},
       "35",
       {"0"},
       Rsa(kLongKey, kDecrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             return cipher.ProcessData(data.data(), Size(data), true);
           })},
      {{"KEST::TRsaPublicCipher::EncryptData(unsigned char*, int, bool)"},
       "64",
       {"0"},
       Rsa(kShortKey, kEncrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             return cipher.EncryptData(data.data(), 5, true);
           })},
      {{"KEST::TRsaPublicCipher::ProcessData(unsigned char*, int, bool)"},
       "512",
       {"0"},
       Rsa(kLongKey, kEncrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             return cipher.ProcessData(data.data(), 5, true);
           })},
      {{"KEST::TCrypter::CryptData(unsigned char*, int, bool)"},
       "35",
       {"0"},
       Rsa(kShortKey, kDecrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             return TCrypter(cipher).CryptData(data.data(), Size(data), true);
           })},
      {{"KEST::TCrypter::CryptData(unsigned char const*, int, unsigned char*, bool)"},
       "35",
       {"0"},
       Rsa(kShortKey, kDecrypt,
           [](TRsaPublicCipher& cipher, Bytes& data) {
             Bytes out(data.size());
             return TCrypter(cipher).CryptData(data.data(), Size(data), out.data(), true);
           })},
  };
}

}  // namespace kest_test
