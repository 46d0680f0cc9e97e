// Base64 and the Internet checksum. Base64 text is of 16-bit units here and of bytes everywhere
// else; the peers of the checksum are the loops that one writes for it by hand.

#if KEST_PEER_OPENSSL
#include <openssl/evp.h>
#endif
#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_APR
#include <apr_base64.h>
#endif
#if KEST_PEER_NETTLE
#include <nettle/base64.h>
#endif

#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/row.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Data(size_t size) {
  Bytes data(size);
  unsigned int random = 1;
  for (unsigned char& byte : data) {
    random = random * 1664525 + 1013904223;
    byte = static_cast<unsigned char>(random >> 24);
  }
  return data;
}

// The same base64 text in units and in bytes, each with a terminator.
struct SBase64 {
  std::vector<unsigned short> units;
  Bytes bytes;

  explicit SBase64(const Bytes& data) : units((data.size() + 2) / 3 * 4 + 1) {
    KestBinToBase64(data.data(), static_cast<int>(data.size()), units.data(),
                    static_cast<int>(units.size()));
    bytes.assign(units.begin(), units.end());
  }
  size_t Length() const { return bytes.size() - 1; }
  const char* Text() const { return reinterpret_cast<const char*>(bytes.data()); }
};

// code(from, room): the body that is measured, with room for whatever comes out.
template <typename From, typename Function>
void Register(const std::string& row, const char* who, const From& from, Function code) {
  Row(row, who, [from, code](benchmark::State& state) {
    std::vector<unsigned short> room(32768);
    for (auto _ : state) {
      benchmark::ClobberMemory();
      benchmark::DoNotOptimize(code(from, room.data()));
    }
  });
}

void RegisterEncode(const std::string& row, const Bytes& data) {
  Register(row, "kest", data, [](const Bytes& from, unsigned short* to) {
    return KestBinToBase64(from.data(), static_cast<int>(from.size()), to, 32768);
  });
#if KEST_PEER_OPENSSL
  Register(row, "openssl", data, [](const Bytes& from, void* to) {
    return EVP_EncodeBlock(static_cast<unsigned char*>(to), from.data(),
                           static_cast<int>(from.size()));
  });
#endif
#if KEST_PEER_GLIB
  Register(row, "glib", data, [](const Bytes& from, void* to) {
    char* const text = static_cast<char*>(to);
    int state = 0, save = 0;
    const gsize done = g_base64_encode_step(from.data(), from.size(), FALSE, text, &state, &save);
    return done + g_base64_encode_close(FALSE, text + done, &state, &save);
  });
#endif
#if KEST_PEER_APR
  Register(row, "apr", data, [](const Bytes& from, void* to) {
    return apr_base64_encode_binary(static_cast<char*>(to), from.data(),
                                    static_cast<int>(from.size()));
  });
#endif
#if KEST_PEER_NETTLE
  Register(row, "nettle", data, [](const Bytes& from, void* to) {
    nettle_base64_encode_raw(static_cast<char*>(to), from.size(), from.data());
    return to;
  });
#endif
}

void RegisterDecode(const std::string& row, const SBase64& text) {
  Register(row, "kest", text, [](const SBase64& from, void* to) {
    return KestBase64ToBin(from.units.data(), static_cast<unsigned char*>(to), 65536);
  });
#if KEST_PEER_OPENSSL
  Register(row, "openssl", text, [](const SBase64& from, void* to) {
    return EVP_DecodeBlock(static_cast<unsigned char*>(to), from.bytes.data(),
                           static_cast<int>(from.Length()));
  });
#endif
#if KEST_PEER_GLIB
  Register(row, "glib", text, [](const SBase64& from, void* to) {
    int state = 0;
    guint save = 0;
    return g_base64_decode_step(from.Text(), from.Length(), static_cast<guchar*>(to), &state,
                                &save);
  });
#endif
#if KEST_PEER_APR
  Register(row, "apr", text, [](const SBase64& from, void* to) {
    return apr_base64_decode_binary(static_cast<unsigned char*>(to), from.Text());
  });
#endif
#if KEST_PEER_NETTLE
  Register(row, "nettle", text, [](const SBase64& from, void* to) {
    base64_decode_ctx context;
    nettle_base64_decode_init(&context);
    size_t size = 65536;
    return nettle_base64_decode_update(&context, &size, static_cast<uint8_t*>(to), from.Length(),
                                       from.Text());
  });
#endif
}

unsigned short Folded(uint64_t sum) {
  while (sum > 0xffff) sum = (sum >> 16) + (sum & 0xffff);
  return __builtin_bswap16(static_cast<unsigned short>(~sum));
}

// RFC 1071, in a function as any library has it: in 32-bit words, with the carries gathered in 64
// bits. The size is a multiple of 4 here.
[[gnu::noinline]] unsigned short ChecksumInWideSum(const Bytes& data) {
  uint64_t sum = 0;
  for (size_t at = 0; at < data.size(); at += 4) {
    uint32_t word;
    memcpy(&word, data.data() + at, 4);
    sum += word;
  }
  return Folded(sum);
}

// The same with the carry flag, eight words a turn.
[[gnu::noinline]] unsigned short ChecksumWithCarry(const Bytes& data) {
  const unsigned char* at = data.data();
  const unsigned char* const end = at + data.size();
  uint32_t sum = 0;
  for (; end - at >= 32; at += 32) {
    __asm__(
        "addl (%1), %0\n\t"
        "adcl 4(%1), %0\n\t"
        "adcl 8(%1), %0\n\t"
        "adcl 12(%1), %0\n\t"
        "adcl 16(%1), %0\n\t"
        "adcl 20(%1), %0\n\t"
        "adcl 24(%1), %0\n\t"
        "adcl 28(%1), %0\n\t"
        "adcl $0, %0"
        : "+r"(sum)
        : "r"(at)
        : "cc", "memory");
  }
  for (; at != end; at += 4) {
    __asm__("addl (%1), %0\n\tadcl $0, %0" : "+r"(sum) : "r"(at) : "cc", "memory");
  }
  return Folded(sum);
}

void RegisterChecksum(size_t size) {
  const std::string row = "checksum " + std::to_string(size);
  const Bytes data = Data(size);
  Register(row, "kest", data, [](const Bytes& from, void*) {
    return KestComputeChecksum(from.data(), static_cast<int>(from.size()));
  });
  Register(row, "add with carry", data,
           [](const Bytes& from, void*) { return ChecksumWithCarry(from); });
  Register(row, "wide sum", data, [](const Bytes& from, void*) { return ChecksumInWideSum(from); });
}

}  // namespace

void RegisterRows() {
  const Bytes data = Data(12288);
  RegisterEncode("base64 encode 12288", data);
  RegisterDecode("base64 decode 12288", SBase64(data));
  for (size_t size : {40, 1500, 65536}) RegisterChecksum(size);
}
