#include "crypto/cipher_checks.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TDesCipher;

struct SVector {
  const char* key;
  const char* plaintext;
  const char* ciphertext;
};

// The worked example that accompanies FIPS 46, and one of FIPS 81, table B1.
constexpr SVector kExamples[] = {
    {"133457799bbcdff1", "0123456789abcdef", "85e813540f0ab405"},
    {"0123456789abcdef", "4e6f772069732074", "3fa40e8a984d4815"},
};

// SP 500-20, appendix B: the permutation operation test, all for the plaintext 0. Columns: key,
// ciphertext.
constexpr const char* kPermutationTest[][2] = {
    {"1046913489980131", "88d55e54f54c97b4"}, {"1007103489988020", "0c0cc00c83ea48fd"},
    {"10071034c8980120", "83bc8ef3a6570183"}, {"1046103489988020", "df725dcad94ea2e9"},
    {"1086911519190101", "e652b53b550be8b0"}, {"1086911519580101", "af527120c485cbb0"},
    {"5107b01519580101", "0f04ce393db926d5"}, {"1007b01519190101", "c9f00ffc74079067"},
    {"3107915498080101", "7cfd82a593252b4e"}, {"3107919498080101", "cb49a2f9e91363e3"},
    {"10079115b9080140", "00b588be70d23f56"}, {"3107911598080140", "406a9a6ab43399ae"},
    {"1007d01589980101", "6cb773611dca9ada"}, {"9107911589980101", "67fd21c17dbb5d70"},
    {"9107d01589190101", "9592cb4110430787"}, {"1007d01598980120", "a6b7ff68a318ddd3"},
    {"1007940498190101", "4d102196c914ca16"}, {"0107910491190401", "2dfa9f4573594965"},
    {"0107910491190101", "b46604816c0e0774"}, {"0107940491190401", "6e7e6221a4f34e87"},
    {"19079210981a0101", "aa85e74643233199"}, {"1007911998190801", "2e5a19db4d1962d6"},
    {"10079119981a0801", "23a866a809d30894"}, {"1007921098190101", "d812d961f017d320"},
    {"100791159819010b", "055605816e58608f"}, {"1004801598190101", "abd88e8b1b7716f1"},
    {"1004801598190102", "537ac95be69da1e1"}, {"1004801598190108", "aed0f6ae3c25cdd8"},
    {"1002911498100104", "b3e35a5ee53e7b8d"}, {"1002911598190104", "61c79c71921a2ef8"},
    {"1002911598100201", "e2f5728f0995013c"}, {"1002911698100101", "1aeac39a61f0a464"},
};

// SP 500-20, appendix B: the substitution table test. Columns: key, plaintext, ciphertext.
constexpr SVector kSubstitutionTest[] = {
    {"7ca110454a1a6e57", "01a1d6d039776742", "690f5b0d9a26939b"},
    {"0131d9619dc1376e", "5cd54ca83def57da", "7a389d10354bd271"},
    {"07a1133e4a0b2686", "0248d43806f67172", "868ebb51cab4599a"},
    {"3849674c2602319e", "51454b582ddf440a", "7178876e01f19b2a"},
    {"04b915ba43feb5b6", "42fd443059577fa2", "af37fb421f8c4095"},
    {"0113b970fd34f2ce", "059b5e0851cf143a", "86a560f10ec6d85b"},
    {"0170f175468fb5e6", "0756d8e0774761d2", "0cd3da020021dc09"},
    {"43297fad38e373fe", "762514b829bf486a", "ea676b2cb7db2b7a"},
    {"07a7137045da2a16", "3bdd119049372802", "dfd64a815caf1a0f"},
    {"04689104c2fd3b2f", "26955f6835af609a", "5c513c9c4886c088"},
    {"37d06bb516cb7546", "164d5e404f275232", "0a2aeeae3ff4ab77"},
    {"1f08260d1ac2465e", "6b056e18759f5cca", "ef1bf03e5dfa575a"},
    {"584023641aba6176", "004bd6ef09176062", "88bf0db6d70dee56"},
    {"025816164629b007", "480d39006ee762f2", "a1f9915541020b56"},
    {"49793ebc79b3258f", "437540c8698f3cfa", "6fbf1cafcffd0556"},
    {"4fb05e1515ab73a7", "072d43a077075292", "2f22e49bab7ca1ac"},
    {"49e95d6d4ca229bf", "02fe55778117f12a", "5a6b612cc26cce4a"},
    {"018310dc409b26d6", "1d9d5c5018f728c2", "5f4c038ed12b2e41"},
    {"1c587f1c13924fef", "305532286d6f295a", "63fac0d034d9f793"},
};

// SP 500-20, appendix B: the variable plaintext test, for key 01...01 and each single bit in turn,
// the most significant one first.
constexpr const char* kVariablePlaintext[64] = {
    "95f8a5e5dd31d900", "dd7f121ca5015619", "2e8653104f3834ea", "4bd388ff6cd81d4f",
    "20b9e767b2fb1456", "55579380d77138ef", "6cc5defaaf04512f", "0d9f279ba5d87260",
    "d9031b0271bd5a0a", "424250b37c3dd951", "b8061b7ecd9a21e5", "f15d0f286b65bd28",
    "add0cc8d6e5deba1", "e6d5f82752ad63d1", "ecbfe3bd3f591a5e", "f356834379d165cd",
    "2b9f982f20037fa9", "889de068a16f0be6", "e19e275d846a1298", "329a8ed523d71aec",
    "e7fce22557d23c97", "12a9f5817ff2d65d", "a484c3ad38dc9c19", "fbe00a8a1ef8ad72",
    "750d079407521363", "64feed9c724c2faf", "f02b263b328e2b60", "9d64555a9a10b852",
    "d106ff0bed5255d7", "e1652c6b138c64a5", "e428581186ec8f46", "aeb5f5ede22d1a36",
    "e943d7568aec0c5c", "df98c8276f54b04b", "b160e4680f6c696f", "fa0752b07d9c4ab8",
    "ca3a2b036dbc8502", "5e0905517bb59bcf", "814eeb3b91d90726", "4d49db1532919c9f",
    "25eb5fc3f8cf0621", "ab6a20c0620d1c6f", "79e90dbc98f92cca", "866ecedd8072bb0e",
    "8b54536f2f3e64a8", "ea51d3975595b86b", "caffc6ac4542de31", "8dd45a2ddf90796c",
    "1029d55e880ec2d0", "5d86cb23639dbea9", "1d1ca853ae7c0c5f", "ce332329248f3228",
    "8405d1abe24fb942", "e643d78090ca4207", "48221b9937748a23", "dd7c0bbd61fafd54",
    "2fbc291a570db5c4", "e07c30d7e4e26e12", "0953e2258e8e90a1", "5b711bc4ceebf2ee",
    "cc083f1e6d9e85f6", "d2fd8867d50d2dfe", "06e7ea22ce92708f", "166b40b44aba4bd6",
};

// SP 500-20, appendix B: the variable key test, for plaintext 0 and each bit of the key in turn,
// parity bits left out.
constexpr const char* kVariableKey[56] = {
    "95a8d72813daa94d", "0eec1487dd8c26d5", "7ad16ffb79c45926", "d3746294ca6a6cf3",
    "809f5f873c1fd761", "c02faffec989d1fc", "4615aa1d33e72f10", "2055123350c00858",
    "df3b99d6577397c8", "31fe17369b5288c9", "dfdd3cc64dae1642", "178c83ce2b399d94",
    "50f636324a9b7f80", "a8468ee3bc18f06d", "a2dc9e92fd3cde92", "cac09f797d031287",
    "90ba680b22aeb525", "ce7a24f350e280b6", "882bff0aa01a0b87", "25610288924511c2",
    "c71516c29c75d170", "5199c29a52c9f059", "c22f0a294a71f29f", "ee371483714c02ea",
    "a81fbd448f9e522f", "4f644c92e192dfed", "1afa9a66a6df92ae", "b3c1cc715cb879d8",
    "19d032e64ab0bd8b", "3cfaa7a7dc8720dc", "b7265f7f447ac6f3", "9db73b3c0d163f54",
    "8181b65babf4a975", "93c9b64042eaa240", "5570530829705592", "8638809e878787a0",
    "41b9a79af79ac208", "7a9be42f2009a892", "29038d56ba6d2745", "5495c6abf1e5df51",
    "ae13dbd561488933", "024d1ffa8904e389", "d1399712f99bf02e", "14c1d7c1cffec79e",
    "1de5279dae3bed6f", "e941a33f85501303", "da99dbbc9a03f379", "b7fc92f91d8e92e9",
    "ae8e5caa3ca04e85", "9cc62df43b6eed74", "d863dbb5c59a91a0", "a1ab2190545b91d7",
    "0875041e64c570f7", "5a594528bebef1cc", "fcdb3291de21f0c0", "869efd7f9f265a09",
};

TDesCipher Des(TCipher::ECipherOp op, const std::string& key) {
  return TDesCipher(op, FromHex(key).data(), 8);
}

// Both directions.
void Matches(const std::string& key, const std::string& plaintext, const std::string& ciphertext) {
  EXPECT_EQ(ciphertext, Block(Des(kEncrypt, key), plaintext)) << key << ' ' << plaintext;
  EXPECT_EQ(plaintext, Block(Des(kDecrypt, key), ciphertext)) << key << ' ' << ciphertext;
}

std::string WithBit(std::string bytes, int bit) {
  Bytes value = FromHex(bytes);
  value[static_cast<size_t>(bit / 8)] =
      static_cast<unsigned char>(value[static_cast<size_t>(bit / 8)] ^ 0x80 >> bit % 8);
  return Hex(value);
}

std::string Inverted(const std::string& bytes) {
  Bytes value = FromHex(bytes);
  for (unsigned char& byte : value) byte = static_cast<unsigned char>(~byte);
  return Hex(value);
}

// The words of a cipher's schedule, which lies behind the fields of the base.
std::vector<unsigned int> ScheduleOf(const TDesCipher& cipher) {
  std::vector<unsigned int> words(32);
  memcpy(words.data(), reinterpret_cast<const char*>(&cipher) + sizeof(KEST::TBlockCipher), 128);
  return words;
}

TEST(DesCipher, MatchesTheExamplesOfTheStandards) {
  for (const SVector& row : kExamples) Matches(row.key, row.plaintext, row.ciphertext);
}

TEST(DesCipher, PassesTheVariablePlaintextTest) {
  for (int bit = 0; bit < 64; ++bit) {
    Matches("0101010101010101", WithBit("0000000000000000", bit), kVariablePlaintext[bit]);
  }
}

// The inverse permutation and the expansion: plaintext and ciphertext of that test exchanged.
TEST(DesCipher, PassesTheInversePermutationTest) {
  for (int bit = 0; bit < 64; ++bit) {
    Matches("0101010101010101", kVariablePlaintext[bit], WithBit("0000000000000000", bit));
  }
}

TEST(DesCipher, PassesTheVariableKeyTest) {
  int row = 0;
  for (int bit = 0; bit < 64; ++bit) {
    if (bit % 8 == 7) continue;
    Matches(WithBit("0101010101010101", bit), "0000000000000000", kVariableKey[row++]);
  }
}

TEST(DesCipher, PassesThePermutationTest) {
  for (const auto& row : kPermutationTest) Matches(row[0], "0000000000000000", row[1]);
}

TEST(DesCipher, PassesTheSubstitutionTest) {
  for (const SVector& row : kSubstitutionTest) Matches(row.key, row.plaintext, row.ciphertext);
}

// R. Rivest, Testing implementations of DES: 16 steps, encrypting and decrypting in turn.
TEST(DesCipher, PassesTheRecurrenceTest) {
  std::string x = "9474b8e8c73bca7d";
  for (int i = 0; i < 16; ++i) x = Block(Des(i % 2 == 0 ? kEncrypt : kDecrypt, x), x);
  EXPECT_EQ("1b1a2ddb4c642438", x);
}

// 10,000 steps, each with the last result in its key; the end computed with openssl's libcrypto.
TEST(DesCipher, MatchesOpensslOverALongChain) {
  Bytes key = FromHex("0123456789abcdef"), x(8);
  for (int n = 0; n < 10000; ++n) {
    TDesCipher(n % 3 != 0 ? kEncrypt : kDecrypt, key.data(), 8).ProcessBlock(x.data());
    for (size_t k = 0; k < 8; ++k) key[k] ^= x[k];
  }
  EXPECT_EQ("8769b1bbaa2150fd", Hex(x));
}

TEST(DesCipher, MatchesTheModesOfFips81) {
  const Bytes text = FromHex("4e6f77206973207468652074696d6520666f7220616c6c20");
  const char* const expected[2] = {"e5c7cdde872bf27c43e934008c389c0f683788499a7c05f6",
                                   "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53"};
  for (KEST::TBlockCipher::ECipherMode mode : {kCbc, kEcb}) {
    TDesCipher encrypting = Des(kEncrypt, "0123456789abcdef");
    TDesCipher decrypting = Des(kDecrypt, "0123456789abcdef");
    for (TDesCipher* cipher : {&encrypting, &decrypting}) {
      cipher->SetMode(mode);
      cipher->SetIv(FromHex("1234567890abcdef").data());
    }
    const Bytes ciphertext = Process(encrypting, text, false);
    EXPECT_EQ(expected[mode], Hex(ciphertext));
    EXPECT_EQ(Hex(text), Hex(Process(decrypting, ciphertext, false)));
  }
}

// openssl enc -des-cbc -K 0123456789abcdef -iv 1234567890abcdef -provider legacy
TEST(DesCipher, PadsA16ByteMessageTo24) {
  TDesCipher cipher = Des(kEncrypt, "0123456789abcdef");
  cipher.SetIv(FromHex("1234567890abcdef").data());
  const Bytes text = FromHex("4e6f77206973207468652074696d6520");
  EXPECT_EQ("e5c7cdde872bf27c43e934008c389c0fa2ee0b9e910b5db5", Hex(Process(cipher, text, true)));
}

TEST(DesCipher, ComplementsCommute) {
  const std::string key = "133457799bbcdff1", text = "0123456789abcdef";
  Matches(Inverted(key), Inverted(text), Inverted("85e813540f0ab405"));
}

// FIPS 74: under a weak key encryption undoes itself, under a pair of semi-weak ones each undoes
// the other. None is refused.
TEST(DesCipher, WeakKeysAreNotRefused) {
  const char* const pairs[][2] = {
      {"0101010101010101", "0101010101010101"}, {"fefefefefefefefe", "fefefefefefefefe"},
      {"1f1f1f1f0e0e0e0e", "1f1f1f1f0e0e0e0e"}, {"e0e0e0e0f1f1f1f1", "e0e0e0e0f1f1f1f1"},
      {"01fe01fe01fe01fe", "fe01fe01fe01fe01"}, {"1fe01fe00ef10ef1", "e01fe01ff10ef10e"},
      {"01e001e001f101f1", "e001e001f101f101"}, {"1ffe1ffe0efe0efe", "fe1ffe1ffe0efe0e"},
      {"011f011f010e010e", "1f011f010e010e01"}, {"e0fee0fef1fef1fe", "fee0fee0fef1fef1"},
  };
  for (const auto& pair : pairs) {
    const std::string once = Block(Des(kEncrypt, pair[0]), "0123456789abcdef");
    EXPECT_NE("0123456789abcdef", once);
    EXPECT_EQ("0123456789abcdef", Block(Des(kEncrypt, pair[1]), once)) << pair[0];
  }
}

// From the worked example: K1 is 000110 110000 001011 101111 111111 000111 000001 110010, K16 is
// 110010 110011 110110 001011 000011 100001 011111 110101. Odd groups make the first word.
TEST(DesCipher, TheScheduleHoldsTwoWordsARound) {
  const std::vector<unsigned int> words = ScheduleOf(Des(kEncrypt, "133457799bbcdff1"));
  EXPECT_EQ(0x060b3f01u, words[0]);
  EXPECT_EQ(0x302f0732u, words[1]);
  EXPECT_EQ(0x3236031fu, words[30]);
  EXPECT_EQ(0x330b2135u, words[31]);
}

TEST(DesCipher, DecryptionReversesTheRoundsOfTheSchedule) {
  const std::vector<unsigned int> forth = ScheduleOf(Des(kEncrypt, "133457799bbcdff1"));
  const std::vector<unsigned int> back = ScheduleOf(Des(kDecrypt, "133457799bbcdff1"));
  for (size_t round = 0; round < 16; ++round) {
    EXPECT_EQ(forth[2 * round], back[30 - 2 * round]);
    EXPECT_EQ(forth[2 * round + 1], back[31 - 2 * round]);
  }
}

// On purpose: such an object's ProcessData decrypts, but each block goes through an encryption.
TEST(DesCipher, AnyOtherOpDecryptsThroughAnEncryptingSchedule) {
  for (int op : {2, -1, INT_MAX, INT_MIN}) {
    TDesCipher cipher = Des(static_cast<TCipher::ECipherOp>(op), "133457799bbcdff1");
    EXPECT_EQ(ScheduleOf(Des(kEncrypt, "133457799bbcdff1")), ScheduleOf(cipher));
    EXPECT_EQ("85e813540f0ab405", Block(cipher, "0123456789abcdef"));
    cipher.SetMode(kEcb);
    EXPECT_EQ("85e813", Hex(Process(cipher, FromHex("0123456789abcdef"), true))) << "5 bytes less";
    EXPECT_EQ(0u, Process(cipher, FromHex("01234567"), true).size()) << "no whole block";
  }
}

TEST(DesCipher, ParityBitsHaveNoEffect) {
  for (int bit = 7; bit < 64; bit += 8) {
    EXPECT_EQ(ScheduleOf(Des(kEncrypt, "133457799bbcdff1")),
              ScheduleOf(Des(kEncrypt, WithBit("133457799bbcdff1", bit))));
  }
  for (int bit = 0; bit < 64; ++bit) {
    if (bit % 8 == 7) continue;
    EXPECT_NE(ScheduleOf(Des(kEncrypt, "133457799bbcdff1")),
              ScheduleOf(Des(kEncrypt, WithBit("133457799bbcdff1", bit))));
  }
}

TEST(DesCipher, TheKeyLengthIsNotLookedAt) {
  const Bytes key = FromHex("133457799bbcdff1");
  for (int length : {0, 1, 7, 9, 16, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ("85e813540f0ab405",
              Block(TDesCipher(kEncrypt, key.data(), length), "0123456789abcdef"));
  }
}

TEST(DesCipher, BlocksMayLieAtAnyAddress) {
  const TDesCipher cipher = Des(kEncrypt, "133457799bbcdff1");
  for (size_t offset = 0; offset < 8; ++offset) {
    Bytes memory(16, 0xee);
    memcpy(memory.data() + offset, FromHex("0123456789abcdef").data(), 8);
    cipher.ProcessBlock(memory.data() + offset);
    EXPECT_EQ(std::string(2 * offset, 'e') + "85e813540f0ab405" + std::string(16 - 2 * offset, 'e'),
              Hex(memory));
  }
}

TEST(DesCipher, TheBlockSizeIs8InEveryState) {
  TDesCipher cipher = Des(kEncrypt, "133457799bbcdff1");
  EXPECT_EQ(8, cipher.GetBlockSize());
  cipher.SetMode(static_cast<KEST::TBlockCipher::ECipherMode>(7));
  Process(cipher, Counting(8), false);
  EXPECT_EQ(8, cipher.GetBlockSize());
  EXPECT_EQ(8, Des(kOddOp, "133457799bbcdff1").GetBlockSize());
}

TEST(DesCipher, WritesItsIdentifierWithTheVector) {
  TDesCipher cipher = Des(kEncrypt, "133457799bbcdff1");
  Bytes out(24, 0xee);
  EXPECT_EQ(21, cipher.BerDump(out.data(), 21));
  EXPECT_EQ("301306052b0e030207300a04080000000000000000eeeeee", Hex(out)) << "zeros before SetIv";
  cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
  Process(cipher, Counting(8), false);  // moves the chain, not the vector
  for (KEST::TBlockCipher::ECipherMode mode : {kEcb, kCbc}) {
    cipher.SetMode(mode);
    for (int size : {21, 22, INT_MAX}) {
      out.assign(24, 0xee);
      EXPECT_EQ(21, cipher.BerDump(out.data(), size));
      EXPECT_EQ("301306052b0e030207300a0408a1a2a3a4a5a6a7a8eeeeee", Hex(out));
    }
  }
}

TEST(DesCipher, WritesNothingWithoutRoomForTheIdentifier) {
  TDesCipher cipher = Des(kEncrypt, "133457799bbcdff1");
  Bytes out(24, 0xee);
  for (int size : {20, 1, 0, -1, INT_MIN}) EXPECT_EQ(0, cipher.BerDump(out.data(), size)) << size;
  EXPECT_EQ(std::string(48, 'e'), Hex(out));
  EXPECT_EQ(0, cipher.BerDump(nullptr, 0));
}

TEST(DesCipher, ReadsNoParameters) {
  TDesCipher cipher = Des(kEncrypt, "133457799bbcdff1");
  Bytes own(21);
  cipher.BerDump(own.data(), 21);
  EXPECT_EQ(0, cipher.BerInit(own.data(), 21));
  EXPECT_EQ(0, cipher.BerInit(nullptr, 0));
  EXPECT_EQ("85e813540f0ab405", Block(cipher, "0123456789abcdef"));
}

TEST(DesCipher, ACopyGoesOnByItself) {
  CopiesGoOnByThemselves(Des(kEncrypt, "133457799bbcdff1"), Des(kDecrypt, "0000000000000000"));
}

TEST(DesCipher, DestructionWipesTheSchedule) {
  const Bytes left = AfterDestruction<TDesCipher>(sizeof(KEST::TBlockCipher), kEncrypt,
                                                  FromHex("133457799bbcdff1").data(), 8);
  EXPECT_EQ(Bytes(left.size()), left);
}

unsigned char s_key[8] = {0x13, 0x34, 0x57, 0x79, 0x9b, 0xbc, 0xdf, 0xf1};

// C0 and D0 of the worked example, to which the halves come back after all rounds.
constexpr unsigned int kHalves[2] = {0x0f0ccaaf, 0x0556678f};

TEST(DesCipher, ConstructionLeavesNoKeyOnTheStack) {
  alignas(TDesCipher) static unsigned char place[sizeof(TDesCipher)];
  const Bytes stack = StackAfter([] { ::new (place) TDesCipher(kEncrypt, s_key, 8); });
  EXPECT_FALSE(Holds(stack, kHalves, sizeof(kHalves)));
  EXPECT_FALSE(Holds(stack, s_key, sizeof(s_key)));
  EXPECT_FALSE(Holds(stack, place + sizeof(KEST::TBlockCipher), 16));
}

// That the test above would find them.
TEST(DesCipher, AStackThatHoldsTheHalvesIsFound) {
  const Bytes stack = StackAfter([] {
    volatile unsigned int halves[2] = {kHalves[0], kHalves[1]};
    (void)halves[1];
  });
  EXPECT_TRUE(Holds(stack, kHalves, sizeof(kHalves)));
}

}  // namespace
