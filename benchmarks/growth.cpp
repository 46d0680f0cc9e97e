// What each linear operation costs for 1 to 1,000,000 of what it works on: units, bytes, elements
// or messages. No peers; the plots show whether the cost of one stays where it is. Rows are named
// PLOT: OPERATION, with the size in the place of who.

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kest/kest.h"
#include "support/row.h"

namespace {

using KEST::TBstr;

// The work that is timed, made for a size.
using Work = std::function<void()>;
using MakeWork = Work (*)(size_t size);

struct SOperation {
  const char* name;
  MakeWork make;
};

std::vector<unsigned short> Units(size_t length, unsigned short (*unitAt)(size_t)) {
  std::vector<unsigned short> text(length + 1);
  for (size_t at = 0; at < length; ++at) text[at] = unitAt(at);
  return text;
}

unsigned short Letter(size_t at) { return static_cast<unsigned short>('a' + at % 25); }
unsigned short AlwaysA(size_t) { return 'a'; }
unsigned short French(size_t at) { return at % 7 == 0 ? 0xe9 : Letter(at); }
unsigned short Markup(size_t at) { return at % 40 == 0 ? '&' : Letter(at); }
unsigned short Comma(size_t at) { return at % 24 == 0 ? ',' : Letter(at); }

std::vector<unsigned char> Bytes(size_t length) {
  std::vector<unsigned char> bytes(length + 8);  // a block cipher may pad
  for (size_t at = 0; at < length; ++at) bytes[at] = static_cast<unsigned char>(at * 7 + at / 256);
  return bytes;
}

std::shared_ptr<TBstr> Bstr(size_t length, unsigned short (*unitAt)(size_t) = Letter) {
  return std::make_shared<TBstr>(Units(length, unitAt).data(), static_cast<int>(length));
}

template <typename T>
void Keep(T&& value) {
  benchmark::DoNotOptimize(value);
}

// Whole blocks only: the engine refuses a rest.
int WholeBlocks(size_t size) { return static_cast<int>((size + 7) / 8 * 8); }

const SOperation kWideStrings[] = {
    {"ucslen",
     [](size_t size) -> Work {
       return [text = Units(size, Letter)] { Keep(KEST::ucslen(text.data())); };
     }},
    {"ucschr",
     [](size_t size) -> Work {
       return [text = Units(size, Letter)] { Keep(KEST::ucschr(text.data(), 'z')); };
     }},
    {"ucscmp",
     [](size_t size) -> Work {
       return [a = Units(size, Letter), b = Units(size, Letter)] {
         Keep(KEST::ucscmp(a.data(), b.data()));
       };
     }},
    {"ucsicmp",
     [](size_t size) -> Work {
       return [a = Units(size, Letter), b = Units(size, Letter)] {
         Keep(KEST::ucsicmp(a.data(), b.data()));
       };
     }},
    {"ucsstr",
     [](size_t size) -> Work {
       return
           [text = Units(size, Letter)] { Keep(KEST::ucsstr(text.data(), KEST_TEXT("abcdefgz"))); };
     }},
    {"ucsstr, hostile",
     [](size_t size) -> Work {
       std::vector<unsigned short> needle = Units(size / 2, AlwaysA);
       needle.insert(needle.begin() + static_cast<std::ptrdiff_t>(size / 4), 'b');
       return [text = Units(size, AlwaysA), needle] {
         Keep(KEST::ucsstr(text.data(), needle.data()));
       };
     }},
    {"ucscpy",
     [](size_t size) -> Work {
       return [text = Units(size, Letter), copy = Units(size, Letter)]() mutable {
         Keep(KEST::ucscpy(copy.data(), text.data()));
       };
     }},
};

const SOperation kConversions[] = {
    {"UTF-16 to UTF-8",
     [](size_t size) -> Work {
       return [text = Units(size, French), out = std::vector<char>(3 * size + 1)]() mutable {
         Keep(KestStringToUtf8(text.data(), static_cast<int>(text.size() - 1), out.data(),
                               static_cast<int>(out.size())));
       };
     }},
    {"UTF-8 to UTF-16",
     [](size_t size) -> Work {
       std::string text;
       while (text.size() < size) text += "d\303\251j\303\240 vu ";
       return [text, out = Units(text.size(), Letter)]() mutable {
         Keep(KestUtf8ToString(text.data(), static_cast<int>(text.size()), out.data(),
                               static_cast<int>(out.size())));
       };
     }},
    {"UTF-16 to 8-bit",
     [](size_t size) -> Work {
       return [text = Units(size, French), out = std::vector<char>(size + 1)]() mutable {
         Keep(KestUnicodeToMultibyte(text.data(), static_cast<int>(text.size() - 1), out.data(),
                                     static_cast<int>(out.size())));
       };
     }},
    {"8-bit to UTF-16",
     [](size_t size) -> Work {
       return [text = std::string(size, 'x'), out = Units(size, Letter)]() mutable {
         Keep(KestMultibyteToUnicode(text.data(), static_cast<int>(text.size()), out.data(),
                                     static_cast<int>(out.size())));
       };
     }},
    {"base64, encode",
     [](size_t size) -> Work {
       return [bytes = Bytes(size), size, out = Units(size * 4 / 3 + 8, Letter)]() mutable {
         Keep(KestBinToBase64(bytes.data(), static_cast<int>(size), out.data(),
                              static_cast<int>(out.size())));
       };
     }},
    {"base64, decode",
     [](size_t size) -> Work {
       return [text = Units(size / 4 * 4, Letter), out = Bytes(size)]() mutable {
         Keep(KestBase64ToBin(text.data(), out.data(), static_cast<int>(out.size())));
       };
     }},
    {"escape HTML",
     [](size_t size) -> Work {
       return [text = Units(size, Markup)] {
         TBstr out;
         KestPlainToHtml(text.data(), out);
         Keep(out.GetString());
       };
     }},
    {"unescape HTML",
     [](size_t size) -> Work {
       const std::shared_ptr<TBstr> html = std::make_shared<TBstr>();
       KestPlainToHtml(Units(size, Markup).data(), *html);
       return [html] {
         TBstr out;
         KestHtmlToPlain(html->GetString(), out);
         Keep(out.GetString());
       };
     }},
};

const SOperation kStrings[] = {
    {"build",
     [](size_t size) -> Work {
       return [text = Units(size, Letter)] { Keep(TBstr(text.data()).GetString()); };
     }},
    {"append one by one",
     [](size_t size) -> Work {
       return [size] {
         TBstr text;
         for (size_t at = 0; at < size; ++at) text.Append(Letter(at));
         Keep(text.GetString());
       };
     }},
    {"Find",
     [](size_t size) -> Work {
       return [text = Bstr(size)] { Keep(text->Find(KEST_TEXT("abcdefgz"))); };
     }},
    {"Replace",
     [](size_t size) -> Work {
       return [text = Bstr(size, Comma)] {
         TBstr copy(*text);
         Keep(copy.Replace(KEST_TEXT(","), KEST_TEXT(", ")));
       };
     }},
    {"Remove",
     [](size_t size) -> Work {
       return [text = Bstr(size, Comma)] {
         TBstr copy(*text);
         Keep(copy.Remove(','));
       };
     }},
    {"MakeUpper",
     [](size_t size) -> Work {
       return [text = Bstr(size)] {
         text->MakeUpper();
         Keep(text->GetString());
       };
     }},
    {"Format",
     [](size_t size) -> Work {
       return [text = Units(size, Letter)] {
         TBstr out;
         out.Format(KEST_TEXT("<%s>"), text.data());
         Keep(out.GetString());
       };
     }},
};

void* AsPointer(size_t number) { return reinterpret_cast<void*>(number * 16); }

const SOperation kContainers[] = {
    {"array, append",
     [](size_t size) -> Work {
       return [size] {
         KEST::TPtrArray array;
         for (size_t at = 0; at < size; ++at) array.SetAtGrow(static_cast<int>(at), AsPointer(at));
         Keep(array.GetSize());
       };
     }},
    {"list, in and out",
     [](size_t size) -> Work {
       return [size] {
         KEST::TPtrList list;
         for (size_t at = 0; at < size; ++at) list.AddTail(AsPointer(at));
         while (!list.IsEmpty()) Keep(list.RemoveHead());
       };
     }},
    {"map by pointer, sized",
     [](size_t size) -> Work {
       return [size] {
         KEST::TPtrFromPtrMap map;
         map.InitHashTable(static_cast<unsigned int>(size + size / 5 + 1));
         for (size_t at = 0; at < size; ++at) map.SetAt(AsPointer(at), AsPointer(at));
         for (size_t at = 0; at < size; ++at) Keep(map.RemoveKey(AsPointer(at)));
       };
     }},
    {"byte queue, 1 KiB in and out",
     [](size_t size) -> Work {
       return [size, bytes = Bytes(1024)]() mutable {
         KEST::TFifoBuffer queue;
         for (size_t done = 0; done < size; done += 1024) {
           const int count = static_cast<int>(std::min<size_t>(size - done, 1024));
           queue.Write(bytes.data(), count);
           Keep(queue.Read(bytes.data(), count));
         }
       };
     }},
    {"messages, post and get",
     [](size_t size) -> Work {
       return [size] {
         for (size_t at = 0; at < size; ++at) KestPostMessage(1, nullptr, nullptr);
         unsigned int id;
         void *first, *second;
         for (size_t at = 0; at < size; ++at) Keep(KestGetMessage(&id, &first, &second));
       };
     }},
};

// The digest of bytes by Digest.
template <typename Digest>
Work DigestOf(size_t size) {
  return [bytes = Bytes(size), size] {
    Digest digest;
    unsigned char result[20];
    digest.Update(bytes.data(), static_cast<int>(size));
    Keep(digest.Finish(result, sizeof(result)));
  };
}

constexpr unsigned char kKey[16] = {1, 35, 69, 103, 137, 171, 205, 239, 1, 2, 3, 4, 5, 6, 7, 8};

// Bytes encrypted in place by cipher, in CBC.
template <typename Cipher>
Work Encrypt(const std::shared_ptr<Cipher>& cipher, size_t size) {
  return [cipher, bytes = Bytes(size), size]() mutable {
    Keep(cipher->ProcessData(bytes.data(), WholeBlocks(size), false));
  };
}

const SOperation kCryptography[] = {
    {"MD5", DigestOf<KEST::TMd5Digest>},
    {"SHA-1", DigestOf<KEST::TShaDigest>},
    {"DES CBC encryption",
     [](size_t size) {
       return Encrypt(std::make_shared<KEST::TDesCipher>(KEST::TCipher::kOpEncrypt, kKey, 8), size);
     }},
    {"DES CBC decryption",
     [](size_t size) {
       return Encrypt(std::make_shared<KEST::TDesCipher>(KEST::TCipher::kOpDecrypt, kKey, 8), size);
     }},
    {"RC4",
     [](size_t size) {
       return Encrypt(
           std::make_shared<KEST::TRc4Cipher>(KEST::TCipher::kOpEncrypt, kKey, sizeof(kKey)), size);
     }},
    {"Internet checksum",
     [](size_t size) -> Work {
       return [bytes = Bytes(size), size] {
         Keep(KestComputeChecksum(bytes.data(), static_cast<int>(size)));
       };
     }},
};

template <size_t kCount>
void RegisterPlot(const std::string& plot, const SOperation (&operations)[kCount]) {
  for (const SOperation& operation : operations) {
    for (size_t size = 1; size <= 1000000; size *= 10) {
      Row(plot + ": " + operation.name, std::to_string(size),
          [make = operation.make, size](benchmark::State& state) {
            const Work work = make(size);
            for (auto _ : state) {
              work();
              benchmark::ClobberMemory();
            }
          });
    }
  }
}

}  // namespace

void RegisterRows() {
  RegisterPlot("wide strings", kWideStrings);
  RegisterPlot("conversions", kConversions);
  RegisterPlot("strings", kStrings);
  RegisterPlot("containers and messages", kContainers);
  RegisterPlot("digests and ciphers", kCryptography);
}
