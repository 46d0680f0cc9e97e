#include "crypto/cipher_checks.h"
#include "support/guarded_block.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TRc4Cipher;

// RFC 6229, section 2: 16 bytes of keystream at each offset.
constexpr size_t kOffsets[18] = {0,    16,   240,  256,  496,  512,  752,  768,  1008,
                                 1024, 1520, 1536, 2032, 2048, 3056, 3072, 4080, 4096};
struct SVector {
  const char* key;
  const char* keystream;
};
constexpr SVector kRfc6229[] = {
    {"0102030405",
     "b2396305f03dc027ccc3524a0a1118a86982944f18fc82d589c403a47a0d091928cb1132c96ce286421dcaadb8b69"
     "eae"
     "1cfcf62b03eddb641d77dfcf7f8d8c9342b7d0cdd918a8a33dd51781c81f40416459844432a7da923cfb3eb498066"
     "1f6"
     "ec10327bde2beefd18f9277680457e22eb62638d4f0ba1fe9fca20e05bf8ff2b45129048e6a0ed0b56b490338f078"
     "da5"
     "30abbcc7c20b01609f23ee2d5f6bb7df3294f744d8f9790507e70f62e5bbceead8729db41882259bee4f825325f5a"
     "130"
     "1eb14a0c13b3bf47fa2a0ba93ad45b8bcc582f8ba9f265e2b1be9112e975d2d7f2e30f9bd102ecbf75aaade9bc35c"
     "43c"
     "ec0e11c479dc329dc8da7968fe965681068326a2118416d21f9d04b2cd1ca050ff25b58995996707e51fbdf08b34d"
     "875"},
    {"01020304050607",
     "293f02d47f37c9b633f2af5285feb46be620f1390d19bd84e2e0fd752031afc1914f02531c9218810df60f67e3381"
     "54c"
     "d0fdb583073ce85ab83917740ec011d575f81411e871cffa70b90c74c592e4540bb87202938dad609e87a5a1b079e"
     "5e4"
     "c2911246b612e7e7b903dfeda1dad86632828f91502b6291368de8081de36fc2f3b9a7e3b297bf9ad804512f9063e"
     "ff1"
     "8ecb67a9ba1f55a5a067e2b026a3676fd2aa902bd42d0d7cfd340cd45810529f78b272c96e42eab4c60bd914e39d0"
     "6e3"
     "f4332fd31a079396ee3cee3f2a4ff04905459781d41fda7f30c1be7e1246c623adfd3868b8e51485d5e610017e3dd"
     "609"
     "ad26581c0c5be45f4cea01db2f3805d5f3172ceffc3b3d997c85ccd5af1a950ce74b0b9731227fd37c0ec08a47ddd"
     "8b8"},
    {"0102030405060708",
     "97ab8a1bf0afb96132f2f67258da15a88263efdb45c4a18684ef87e6b19e5b099636ebc9841926f4f7d1f362bddf6"
     "e18"
     "d0a990ff2c05fef5b90373c9ff4b870a73239f1db7f41d80b643c0c52518ec63163b319923a6bdb4527c626126703"
     "c0f"
     "49d6c8af0f97144a87df21d91472f96644173a103b6616c5d5ad1cee40c863d0273c9c4b27f322e4e716ef53a47de"
     "7a4"
     "c6d0e7b226259fa9023490b26167ad1d1fe8986713f07c3d9ae1c163ff8cf9d38369e1a965610be887fbd0c79162a"
     "afb"
     "0a0127abb44484b9fbef5abcae1b579fc2cdadc6402e8ee866e1f37bdb47e42c26b51ea37df8e1d6f76fc3b66a742"
     "9b3"
     "bc7683205d4f443dc1f29dda3315c87bd5fa5a3469d29aaaf83d23589db8c85b3fb46e2c8f0f068edce8cdcd7dfc5"
     "862"},
    {"0102030405060708090a",
     "ede3b04643e586cc907dc2185170990203516ba78f413beb223aa5d4d2df67113cfd6cb58ee0fdde640176ad00000"
     "44d"
     "48532b21fb6079c9114c0ffd9c04a1ad3e8cea98017109979084b1ef92f99d86e20fb49bdb337ee48b8d8dc0f4afe"
     "ffe"
     "5c2521eacd7966f15e056544bea0d315e067a7031931a246a6c3875d2f678acba64f70af88ae56b6f87581c0e23e6"
     "b08"
     "f449031de312814ec6f319291f4a0516bdae85924b3cb1d0a2e33a30c6d795998a0feddbac865a09bcd127fb562ed"
     "60a"
     "b55a0a5b51a12a8be34899c3e047511ad9a09cea3ce75fe39698070317a71339552225ed1177f44584ac8cfa6c4eb"
     "5fc"
     "7e82cbabfc95381b080998442129c2f81f135ed14ce60a91369d2322bef25e3c08b6be45124a43e2eb77953f84dc8"
     "553"},
    {"0102030405060708090a0b0c0d0e0f10",
     "9ac7cc9a609d1ef7b2932899cde41b975248c4959014126a6e8a84f11d1a9e1c065902e4b620f6cc36c8589f66432"
     "f2b"
     "d39d566bc6bce3010768151549f3873fb6d1e6c4a5e4771cad79538df295fb11c68c1d5c559a974123df1dbc52a43"
     "b89"
     "c5ecf88de897fd57fed301701b82a259eccbe13de1fcc91c11a0b26c0bc8fa4de7a72574f8782ae26aabcf9ebcd66"
     "065"
     "bdf0324e6083dcc6d3cedd3ca8c53c16b40110c4190b5622a96116b0017ed297ffa0b514647ec04f6306b892ae661"
     "181"
     "d03d1bc03cd33d70dff9fa5d71963ebd8a44126411eaa78bd51e8d87a8879bf5fabeb76028ade2d0e48722e46c461"
     "5a3"
     "c05d88abd50357f935a63c59ee537623ff38265c1642c1abe8d3c2fe5e572bf8a36a4c301ae8ac13610ccbc12256c"
     "acc"},
    {"0102030405060708090a0b0c0d0e0f101112131415161718",
     "0595e57fe5f0bb3c706edac8a4b2db11dfde31344a1af769c74f070aee9e2326b06b9b1e195d13d8f4a7995c4553a"
     "c05"
     "6bd2378ec341c9a42f37ba79f88a32ffe70bce1df7645adb5d2c4130215c35229a5730c7fcb4c9af51ffda89c7f1a"
     "d22"
     "0485055fd4f6f0d963ef5ab9a5476982591fc66bcda10e452b03d4551f6b62ac2753cc83988afa3e1688a1d3b42c9"
     "a02"
     "93610d523d1d3f0062b3c2a3bbc7c7f096c248610aadedfeaf8978c03de8205a0e317b3d1c73b9e9a4688f296d133"
     "a19"
     "bdf0e6c3cca5b5b9d533b69c56ada12088a218b6e2ece1e6246d44c759d19b106866397e95c140534f94263421006"
     "e40"
     "32cb0a1e9542c6b3b8b398abc3b0f1d529a0b8aed54a132324c62e423f54b4c83cb0f3b5020a98b82af9fe154484a"
     "168"},
    {"0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20",
     "eaa6bd25880bf93d3f5d1e4ca2611d91cfa45c9f7e714b54bdfa80027cb14380114ae344ded71b35f2e60febad727"
     "fd8"
     "02e1e7056b0f623900496422943e97b691cb93c787964e10d9527d999c6f936b49b18b42f8e8367cbeb5ef104ba1c"
     "7cd"
     "87084b3ba700bade955610672745b374e7a7b9e9ec540d5ff43bdb12792d1b35c799b596738f6b018c76c74b1759b"
     "d90"
     "7fec5bfd9f9b89ce6548309092d7e95840f250b26d1f096a4afd4c340a5888153e34135c79db010200767651cf263"
     "073"
     "f656abccf88dd827027b2ce917d464ec18b62503bfbc077fbabb98f20d98ab348aed95ee5b0dcbfbef4eb21d3a3f5"
     "2f9"
     "625a1ab00ee39a5327346bddb01a9c18a13a7c79c7e119b5ab0296ab28c300b9f3e4c0a2e02d1d01f7f0a74618af2"
     "b48"},
    {"833222772a",
     "80ad97bdc973df8a2e879e92a497efda20f060c2f2e5126501d3d4fea10d5fc0faa148e99046181fec6b2085f3b20"
     "ed9"
     "f0daf5bab3d596839857846f73fbfe5a1c7e2fc4639232fe297584b296996bc83db9b249406cc8edffac55ccd322b"
     "a12"
     "e4f9f7e0066154bbd125b745569bc89775d5ef262b44c41a9cf63ae14568e1b96da453dbf81e82334a3d8866cb50a"
     "1e3"
     "7828d074119cab5c22b294d7a9bfa0bbadb89cea9a15fbe617295bd04b8ca05c6251d87fd4aaae9a7e4ad5c217d3f"
     "300"
     "e7119bd6dd9b22afe8f89585432881e2785b60fd7ec4e9fcb6545f350d660fabafecc037fdb7b0838eb3d70bcd268"
     "382"
     "dbc1a7b49d57358cc9fa6d61d73b7cf06349d126a37afcba89794f9804914fdcbf42c3018c2f7c66bfde524975768"
     "115"},
    {"1910833222772a",
     "bc9222dbd3274d8fc66d14ccbda6690b7ae627410c9a2be693df5bb7485a63e33f0931aa03defb300f060103826f2"
     "a64"
     "beaa9ec8d59bb68129f3027c9636118174e04db46d28648d7dee8a0064b06cfe9b5e81c62fe023c55be42f87bbf93"
     "2b8"
     "ce178fc1826efecbc182f57999a461408bdf55cd55061c06dba6be11de4a578a626f5f4dce652501f3087d39c92cc"
     "349"
     "42daac6a8f9ab9a7fd137c6037825682cc03fdb79192a207312f53f5d4dc33d9f70f14122a1c98a3155d28b8a0a8a"
     "41d"
     "2a3a307ab2708a9c00fe0b42f9c2d6a1862617627d2261eab0b1246597ca0ae955f877ce4f2e1ddbbf8e13e2cde0f"
     "dc8"
     "1b1556cb935f173337705fbb5d501fc1ecd0e96602be7f8d5092816cccf2c2e9027881fab4993a1c262024a94fff3"
     "f61"},
    {"641910833222772a",
     "bbf609de9413172d07660cb68071692646101a6dab43115d6c522b4fe93604a9cbe1fff21c96f3eef61e8fe0542cb"
     "df0"
     "347938bffa4009c512cfb4034b0dd1a77867a786d00a7147904d76ddf1e520e38d3e9e1caefcccb3fbf8d18f64120"
     "b32"
     "942337f8fd76f0fae8c52d7954810672b8548c10f51667f6e60e182fa19b30f70211c7c6190c9efd1237c34c8f2e0"
     "6c4"
     "bda64f65276d2aacb8f90212203a808ebd3820f732ffb53ec193e79d33e27c73d0168616861907d482e36cdac8cf5"
     "749"
     "97b0f0f224b2d2317114808fb03af7a0e59616e469787939a063ceea9af956d1c47e0dc1660919c11101208f9e69a"
     "a1f"
     "5ae4f12896b8379a2aad89b5b553d6b06b6b098d0c293bc2993d80bf0518b6d98170cc3ccd92a698621b939dd38fe"
     "7b9"},
    {"8b37641910833222772a",
     "ab65c26eddb287600db2fda10d1e605cbb759010c29658f2c72d93a2d16d2930b901e8036ed1c383cd3c4c4dd0a6a"
     "b05"
     "3d25ce4922924c55f064943353d78a6c12c1aa44bbf87e75e611f69b2c38f49b28f2b3434b65c09877470044c6ea1"
     "70d"
     "bd9ef822de5288196134cf8af783930467559c23f052158470a296f725735a328bab26fbc2c12b0f13e2ab185eabf"
     "241"
     "31185a6d696f0cfa9b42808b38e132a2564d3dae183c5234c8af1e51061c44b53c0778a7b5f72d3c23a3135c7d67b"
     "9f4"
     "f34369890fcf16fb517dcaae4463b2dd02f31c81e8200731b899b028e791bfa772da646283228c143008537017956"
     "16f"
     "4e0a8c6f7934a788e2265e81d6d0c8f4438dd5eafea0111b6f36b4b938da2a685f6bfc73815874d97100f08697935"
     "7d8"},
    {"ebb46227c6cc8b37641910833222772a",
     "720c94b63edf44e131d950ca211a5a30c366fdeacf9ca80436be7c358424d20bb3394a40aabf75cba42282ef25a00"
     "59f"
     "4847d81da4942dbc249defc48c922b9f08128c469f275342adda202b2b58da95970dacef40ad98723bac5d6955b81"
     "761"
     "3cb89993b07b0ced93de13d2a11013acef2d676f1545c2c13dc680a02f4adbfeb60595514f24bc9fe522a6cad7393"
     "644"
     "b515a8c5011754f59003058bdb81514e3c70047e8cbc038e3b9820db601da4951175da6ee756de46a53e2b075660b"
     "770"
     "00a542bba02111cc2c65b38ebdba587e5865fdbb5b48064104e830b380f2aede34b21ad2ad44e999db2d7f0863f0d"
     "9b6"
     "84a9218fc36e8a5f2ccfbeae53a27d25a2221a11b833ccb498a59540f0545f4a5bbeb4787d59e5373fdbea6c6f75c"
     "29b"},
    {"c109163908ebe51debb46227c6cc8b37641910833222772a",
     "54b64e6b5a20b5e2ec84593dc7989da7c135eee237a85465ff97dc03924f45cecfcc922fb4a14ab45d6175aabbf2d"
     "201"
     "837b87e2a446ad0ef798acd02b94124f17a6dbd664926a0636b3f4c37a4f46944a5f9f26aeeed4d4a25f632d30523"
     "3d9"
     "80a3d01ef00c8e9a4209c17f4eeb358cd15e7d5ffaaabc0207bf200a117793a2349682bf588eaa52d0aa1560346ae"
     "afa"
     "f5854cdb76c889e3ad63354e5f7275e3532c7ceccb39df3236318405a4b1279cbaefe6d9ceb651842260e0d1e05e3"
     "b90"
     "e82d8c6db54e3c633f581c952ba042074b16e50abd381bd70900a9cd9a62cb233682ee33bd148bd9f58656cd8f30d"
     "9fb"
     "1e5a0b8475045d9b20b2628624edfd9e63edd684fb826282fe528f9c0e9237bce4dd2e98d6960fae0b43545456743"
     "391"},
    {"1ada31d5cf688221c109163908ebe51debb46227c6cc8b37641910833222772a",
     "dd5bcb0018e922d494759d7c395d02d3c8446f8f77abf737685353eb89a1c9ebaf3e30f9c095045938151575c3fb9"
     "098"
     "f8cb6274db99b80b1d2012a98ed48f0e25c3005a1cb85de076259839ab7198ab9dcbc183e8cb994b727b75be31807"
     "69c"
     "a1d3078dfa9169503ed9d4491dee4eb28514a5495858096f596e4bcd66b106655f40d59ec1b03b33738efa60b2255"
     "d31"
     "3477c7f764a41baceff90bf14f92b7ccac4e95368d99b9eb78b8da8f81ffa7958c3c13f8c2388bb73f38576e65b7c"
     "446"
     "13c4b9c1dfb66579eddd8a280b9f7316ddd27820550126698efaadc64b64f66ef08f2e66d28ed143f3a237cf9de73"
     "559"
     "9ea36c525531b880ba124334f57b0b70d5a39e3dfcc50280bac4a6b5aa0dca7d370b1c1fe655916d97fd0d47ca1d7"
     "2b8"},
};

TRc4Cipher Rc4(const Bytes& key, TCipher::ECipherOp op = kEncrypt) {
  return TRc4Cipher(op, key.data(), static_cast<int>(key.size()));
}

const Bytes kKey = {'K', 'e', 'y'};
const Bytes kPlaintext = {'P', 'l', 'a', 'i', 'n', 't', 'e', 'x', 't'};
const char* const kCiphertext = "bbf316e8d940af0ad3";

// The fields follow the base's direction at once: keyState, state, i and j.
constexpr size_t kFieldsAt = sizeof(void*) + 4;
constexpr size_t kFieldsSize = 256 + 256 + 4 + 4;

Bytes StateOf(const TRc4Cipher& cipher, size_t from, size_t count) {
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&cipher) + kFieldsAt + from;
  return Bytes(bytes, bytes + count);
}

TEST(Rc4Cipher, MatchesRfc6229) {
  for (const SVector& row : kRfc6229) {
    SCOPED_TRACE(row.key);
    TRc4Cipher cipher = Rc4(FromHex(row.key));
    const Bytes keystream = Process(cipher, Bytes(4112), true);
    std::string seen;
    for (size_t offset : kOffsets) seen += Hex(keystream.data() + offset, 16);
    EXPECT_EQ(row.keystream, seen);
  }
}

// Widely used since the cipher became known. Columns: key, plaintext, ciphertext.
TEST(Rc4Cipher, MatchesTheClassicVectors) {
  const char* const rows[][3] = {
      {"0123456789abcdef", "0123456789abcdef", "75b7878099e0c596"},
      {"0123456789abcdef", "0000000000000000", "7494c2e7104b0879"},
      {"0000000000000000", "0000000000000000", "de188941a3375d3a"},
      {"ef012345", "00000000000000000000", "d6a141a7ec3c38dfbd61"},
      {"4b6579", "506c61696e74657874", "bbf316e8d940af0ad3"},
      {"57696b69", "7065646961", "1021bf0420"},
      {"536563726574", "41747461636b206174206461776e", "45a01f645fc35b383552544b9bf5"},
  };
  for (const auto& row : rows) {
    TRc4Cipher cipher = Rc4(FromHex(row[0]));
    EXPECT_EQ(row[2], Hex(Process(cipher, FromHex(row[1]), true))) << row[0];
  }
}

// Every key length, the next key changed by the keystream; the end computed with openssl's
// libcrypto.
TEST(Rc4Cipher, MatchesOpensslOverALongChain) {
  Bytes key = Counting(256);
  for (int length = 1; length <= 256; ++length) {
    TRc4Cipher cipher(kEncrypt, key.data(), length);
    const Bytes keystream = Process(cipher, Bytes(300), false);
    for (size_t n = 0; n < 256; ++n) key[n] ^= keystream[n + 44];
  }
  key.resize(16);
  EXPECT_EQ("fbb25da861cd8cbafee85930a1281177", Hex(key));
}

TEST(Rc4Cipher, TheKeystreamGoesOnFromCallToCall) {
  for (int cut = 0; cut <= 9; ++cut) {
    TRc4Cipher cipher = Rc4(kKey);
    Bytes data = kPlaintext;
    EXPECT_EQ(cut, cipher.ProcessData(data.data(), cut, false));
    EXPECT_EQ(9 - cut, cipher.ProcessData(data.data() + cut, 9 - cut, false));
    EXPECT_EQ(kCiphertext, Hex(data)) << cut;
  }
}

TEST(Rc4Cipher, GoesOnOverManyRoundsOfTheIndex) {
  TRc4Cipher whole = Rc4(kKey), bytes = Rc4(kKey);
  const Bytes expected = Process(whole, Bytes(2000), false);
  Bytes seen(2000);
  for (unsigned char& byte : seen) bytes.ProcessStream(&byte, 1);
  EXPECT_EQ(expected, seen);
}

// The cipher as it was first described, a byte at a time.
struct SModel {
  explicit SModel(const Bytes& key) : state(256) {
    for (unsigned int n = 0; n < 256; ++n) state[n] = static_cast<unsigned char>(n);
    for (unsigned int n = 0; n < 256; ++n) {
      j = (j + state[n] + key[n % key.size()]) % 256;
      std::swap(state[n], state[j]);
    }
    j = 0;
  }
  void Work(Bytes& data) {
    for (unsigned char& byte : data) {
      i = (i + 1) % 256;
      j = (j + state[i]) % 256;
      std::swap(state[i], state[j]);
      byte ^= state[(state[i] + state[j]) % 256];
    }
  }
  Bytes Fields() const {
    Bytes bytes = state;
    bytes.resize(256 + 8);
    memcpy(bytes.data() + 256, &i, 4);
    memcpy(bytes.data() + 260, &j, 4);
    return bytes;
  }

  Bytes state;
  unsigned int i = 0, j = 0;
};

// Pieces of any length, each up to a page that cannot be touched: swaps into every place ahead, in
// runs that begin and end everywhere.
TEST(Rc4Cipher, MatchesTheModelPieceByPiece) {
  Random random;
  SCOPED_TRACE(random.Seed());
  constexpr int kMost[8] = {4000, 12, 12, 12, 700, 12, 12, 2100};
  for (int n = 0; n < 100; ++n) {
    const Bytes key = random.Bytes(random.Between(1, 256));
    TRc4Cipher cipher = Rc4(key);
    SModel model(key);
    for (int piece = 0; piece < 24; ++piece) {
      const int most = kMost[piece % 8];
      Bytes data = random.Bytes(random.Between(most == 2100 ? 2000 : 0, most));
      const GuardedBlock<unsigned char> guarded(data);
      cipher.ProcessStream(guarded.Get(), static_cast<int>(data.size()));
      model.Work(data);
      ASSERT_EQ(Hex(data), Hex(guarded.Content())) << "case " << n << ", piece " << piece;
      ASSERT_EQ(Hex(model.Fields()), Hex(StateOf(cipher, 256, 256 + 8))) << "case " << n;
    }
  }
}

// From i and j on, length bytes give what the model gives.
void MatchesTheModelFrom(unsigned int i, unsigned int j, int length) {
  SModel model(kKey);
  TRc4Cipher cipher = Rc4(kKey);
  unsigned char* const indexes = reinterpret_cast<unsigned char*>(&cipher) + kFieldsAt + 512;
  memcpy(indexes, &i, 4);
  memcpy(indexes + 4, &j, 4);
  model.i = i;
  model.j = j;
  Bytes data(static_cast<size_t>(length)), expected = data;
  cipher.ProcessStream(data.data(), length);
  model.Work(expected);
  ASSERT_EQ(expected, data) << i << ", " << j << ", " << length;
  ASSERT_EQ(model.Fields(), StateOf(cipher, 256, 256 + 8)) << i << ", " << j << ", " << length;
}

// At every i a swap into each of the places around it; also at the start of long data.
TEST(Rc4Cipher, MatchesTheModelForSwapsNearby) {
  const SModel model(kKey);
  for (unsigned int i = 0; i < 256; ++i) {
    for (unsigned int target = i + 256 - 3; target <= i + 256 + 12; ++target) {
      const unsigned int j = (target - model.state[(i + 1) % 256]) % 256;
      MatchesTheModelFrom(i, j, 17);
      if (i % 16 == 15) MatchesTheModelFrom(i, j, 2048);
    }
  }
}

TEST(Rc4Cipher, FinalStartsTheKeystreamAnew) {
  TRc4Cipher cipher = Rc4(kKey);
  for (int n = 0; n < 3; ++n) EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, true)));
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, false)));
  EXPECT_NE(kCiphertext, Hex(Process(cipher, kPlaintext, false)));
  EXPECT_EQ(0u, Process(cipher, Bytes(), true).size()) << "final without data";
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, false)));
}

TEST(Rc4Cipher, ResetStartsTheKeystreamAnew) {
  TRc4Cipher cipher = Rc4(kKey);
  const Bytes keyState = StateOf(cipher, 0, 256);
  EXPECT_EQ(keyState, StateOf(cipher, 256, 256));
  EXPECT_EQ(Bytes(8), StateOf(cipher, 512, 8));
  Process(cipher, Bytes(1000), false);
  EXPECT_EQ(keyState, StateOf(cipher, 0, 256)) << "what the key gave stays";
  EXPECT_NE(keyState, StateOf(cipher, 256, 256));
  cipher.Reset();
  EXPECT_EQ(keyState, StateOf(cipher, 256, 256));
  EXPECT_EQ(Bytes(8), StateOf(cipher, 512, 8));
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, true)));
}

// 1000 is 3 * 256 + 232.
TEST(Rc4Cipher, IndexesStayBelow256) {
  TRc4Cipher cipher = Rc4(kKey);
  Process(cipher, Bytes(1000), false);
  unsigned int indexes[2];
  memcpy(indexes, StateOf(cipher, 512, 8).data(), 8);
  EXPECT_EQ(232u, indexes[0]);
  EXPECT_LT(indexes[1], 256u);
}

TEST(Rc4Cipher, BothDirectionsDoTheSame) {
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt, kOddOp}) {
    TRc4Cipher cipher = Rc4(kKey, op);
    EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, true)));
    EXPECT_EQ(Hex(kPlaintext), Hex(Process(cipher, FromHex(kCiphertext), true)));
  }
}

TEST(Rc4Cipher, LengthsBelow1ChangeNothing) {
  TRc4Cipher cipher = Rc4(kKey);
  for (int length : {0, -1, -256, INT_MIN}) {
    cipher.ProcessStream(nullptr, length);
    EXPECT_EQ(0, cipher.ProcessData(nullptr, length, false));
  }
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, false)));
  EXPECT_EQ(0, cipher.ProcessData(nullptr, 0, true));
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, false))) << "final resets all the same";
}

TEST(Rc4Cipher, AKeyShorterThan1ByteCountsAs1) {
  const Bytes key = {'K'};  // exactly one, so that a sanitizer sees a read beyond it
  TRc4Cipher expected = Rc4(key);
  const std::string ciphertext = Hex(Process(expected, kPlaintext, true));
  for (int length : {0, -1, -256, INT_MIN}) {
    TRc4Cipher cipher(kEncrypt, key.data(), length);
    EXPECT_EQ(ciphertext, Hex(Process(cipher, kPlaintext, true))) << length;
  }
}

TEST(Rc4Cipher, AKeyIsReadUpTo256Bytes) {
  const Bytes key = Counting(256);  // exactly, so that a sanitizer sees a read beyond it
  const Bytes keyState = StateOf(Rc4(key), 0, 256);
  for (int length : {257, 1000, INT_MAX}) {
    EXPECT_EQ(keyState, StateOf(TRc4Cipher(kEncrypt, key.data(), length), 0, 256)) << length;
  }
  EXPECT_NE(keyState, StateOf(TRc4Cipher(kEncrypt, key.data(), 255), 0, 256));
}

TEST(Rc4Cipher, HasNoStructure) {
  TRc4Cipher cipher = Rc4(kKey);
  Bytes out(64, 0xee);
  for (int size : {0, 1, 64, -1, INT_MAX}) {
    EXPECT_EQ(0, cipher.BerDump(out.data(), size));
    EXPECT_EQ(0, cipher.BerInit(out.data(), size));
  }
  EXPECT_EQ(0, cipher.BerDump(nullptr, 0));
  EXPECT_EQ(0, cipher.BerInit(nullptr, 0));
  EXPECT_EQ(std::string(128, 'e'), Hex(out));
  EXPECT_EQ(kCiphertext, Hex(Process(cipher, kPlaintext, true)));
}

TEST(Rc4Cipher, ACopyGoesOnByItself) {
  CopiesGoOnByThemselves(Rc4(kKey), Rc4(Counting(16), kDecrypt));
}

TEST(Rc4Cipher, DestructionWipesTheState) {
  alignas(TRc4Cipher) unsigned char place[sizeof(TRc4Cipher)];
  TRc4Cipher* cipher = ::new (place) TRc4Cipher(kEncrypt, kKey.data(), 3);
  Process(*cipher, Counting(100), false);
  cipher->~TRc4Cipher();
  const Bytes left(place + kFieldsAt, place + kFieldsAt + kFieldsSize);
  EXPECT_EQ(Bytes(kFieldsSize), left);
}

}  // namespace
