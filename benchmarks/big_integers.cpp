// Big integers: products, quotients and modular powers of 1,024 and 2,048 bits. Everyone's results
// go into numbers that are used again where the peer has such.

#if KEST_PEER_BOTAN
#include <botan/bigint.h>
#include <botan/divide.h>
#include <botan/numthry.h>
#endif
#if KEST_PEER_CRYPTOPP
#include <cryptopp/integer.h>
#include <cryptopp/nbtheory.h>
#endif
#if KEST_PEER_GCRYPT
#include <gcrypt.h>
#endif
#if KEST_PEER_GMP
#include <gmp.h>
#endif
#if KEST_PEER_OPENSSL
#include <openssl/bn.h>
#endif

#include <string>
#include <vector>

#include "kest/crypto.h"
#include "support/row.h"

namespace {

using Bytes = std::vector<unsigned char>;

// Each library is a class with a type of numbers that is made of big-endian bytes, and three
// operations on them.

// A number of a library whose type can be made of bytes.
template <typename Value>
struct Made {
  Made() = default;
  explicit Made(const Bytes& bytes) : value(bytes.data(), bytes.size()) {}
  Value value;
};

struct Kest {
  using Number = Made<KEST::TBigInt>;
  static void Mul(Number& r, const Number& a, const Number& b) {
    KEST::TBigInt::Mul(r.value, a.value, b.value);
  }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    KEST::TBigInt::Div(q.value, rem.value, a.value, d.value);
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    KEST::TBigInt::ExpMod(r.value, base.value, exp.value, m.value);
  }
};

#if KEST_PEER_BOTAN
struct BotanTwo {
  using Number = Made<Botan::BigInt>;
  static void Mul(Number& r, const Number& a, const Number& b) { r.value = a.value * b.value; }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    Botan::vartime_divide(a.value, d.value, q.value, rem.value);
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    r.value = Botan::power_mod(base.value, exp.value, m.value);
  }
};
#endif

#if KEST_PEER_CRYPTOPP
struct CryptoPp {
  using Number = Made<CryptoPP::Integer>;
  static void Mul(Number& r, const Number& a, const Number& b) { r.value = a.value * b.value; }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    CryptoPP::Integer::Divide(rem.value, q.value, a.value, d.value);
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    r.value = CryptoPP::ModularExponentiation(base.value, exp.value, m.value);
  }
};
#endif

#if KEST_PEER_GCRYPT
struct Gcrypt {
  struct Number {
    Number() : value(gcry_mpi_new(0)) {}
    explicit Number(const Bytes& bytes) : value(nullptr) {
      gcry_mpi_scan(&value, GCRYMPI_FMT_USG, bytes.data(), bytes.size(), nullptr);
    }
    ~Number() { gcry_mpi_release(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    gcry_mpi_t value;
  };
  static void Mul(Number& r, const Number& a, const Number& b) {
    gcry_mpi_mul(r.value, a.value, b.value);
  }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    gcry_mpi_div(q.value, rem.value, a.value, d.value, 0);
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    gcry_mpi_powm(r.value, base.value, exp.value, m.value);
  }
};
#endif

#if KEST_PEER_GMP
struct Gmp {
  struct Number {
    Number() { mpz_init(value); }
    explicit Number(const Bytes& bytes) : Number() {
      mpz_import(value, bytes.size(), 1, 1, 0, 0, bytes.data());
    }
    ~Number() { mpz_clear(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    mpz_t value;
  };
  static void Mul(Number& r, const Number& a, const Number& b) {
    mpz_mul(r.value, a.value, b.value);
  }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    mpz_tdiv_qr(q.value, rem.value, a.value, d.value);
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    mpz_powm(r.value, base.value, exp.value, m.value);
  }
};
#endif

#if KEST_PEER_OPENSSL
struct OpenSsl {
  struct Number {
    Number() : value(BN_new()) {}
    explicit Number(const Bytes& bytes)
        : value(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr)) {}
    ~Number() { BN_free(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    BIGNUM* value;
  };
  static BN_CTX* Context() {
    static BN_CTX* const context = BN_CTX_new();
    return context;
  }
  static void Mul(Number& r, const Number& a, const Number& b) {
    BN_mul(r.value, a.value, b.value, Context());
  }
  static void Div(Number& q, Number& rem, const Number& a, const Number& d) {
    BN_div(q.value, rem.value, a.value, d.value, Context());
  }
  static void ExpMod(Number& r, const Number& base, const Number& exp, const Number& m) {
    BN_mod_exp(r.value, base.value, exp.value, m.value, Context());
  }
};
#endif

// The same bytes at each run; the top bit and the lowest are set.
Bytes Sample(int bits, unsigned int seed) {
  Bytes bytes(static_cast<size_t>(bits) / 8);
  for (unsigned char& byte : bytes) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<unsigned char>(seed >> 24);
  }
  bytes.front() |= 0x80;
  bytes.back() |= 1;
  return bytes;
}

const Bytes kPublicExponent = {1, 0, 1};

template <typename Library>
struct Operands {
  using Number = typename Library::Number;
  explicit Operands(int bits)
      : a(Sample(bits, 1)),
        b(Sample(bits, 2)),
        wide(Sample(2 * bits, 3)),
        exponent(Sample(bits, 4)),
        publicExponent(kPublicExponent) {}
  const Number a, b, wide, exponent, publicExponent;
  Number r, rem;
};

template <typename Library>
void RegisterLibrary(const std::string& who, int bits) {
  // For good: libraries end before the rows do.
  auto& operands = *new Operands<Library>(bits);
  const auto row = [&](const std::string& what, auto&& run) {
    Row(what + ", " + std::to_string(bits) + " bits", who,
        [&operands, run](benchmark::State& state) {
          for (auto _ : state) {
            run(operands);
            benchmark::ClobberMemory();
          }
        });
  };
  row("Mul n x n", [](auto& o) { Library::Mul(o.r, o.a, o.b); });
  row("Div 2n by n", [](auto& o) { Library::Div(o.r, o.rem, o.wide, o.b); });
  row("ExpMod e = 65537", [](auto& o) { Library::ExpMod(o.r, o.a, o.publicExponent, o.b); });
  row("ExpMod e of n bits", [](auto& o) { Library::ExpMod(o.r, o.a, o.exponent, o.b); });
}

}  // namespace

void RegisterRows() {
  for (int bits : {1024, 2048}) {
    RegisterLibrary<Kest>("kest", bits);
#if KEST_PEER_BOTAN
    RegisterLibrary<BotanTwo>("botan", bits);
#endif
#if KEST_PEER_CRYPTOPP
    RegisterLibrary<CryptoPp>("cryptopp", bits);
#endif
#if KEST_PEER_GCRYPT
    RegisterLibrary<Gcrypt>("gcrypt", bits);
#endif
#if KEST_PEER_GMP
    RegisterLibrary<Gmp>("gmp", bits);
#endif
#if KEST_PEER_OPENSSL
    RegisterLibrary<OpenSsl>("openssl", bits);
#endif
  }
}
