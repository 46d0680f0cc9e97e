// The S-boxes of DES as circuits, for computing on many blocks at once, a bit of each in a vector.
// They were found by a randomised search; that they are the S-boxes is checked below for all
// inputs.
//
// Wires are numbered: first the six inputs of the box, from the first to the last, then what the
// gates give, one after the other.

#ifndef KEST_SRC_CRYPTO_DES_CIRCUITS_H
#define KEST_SRC_CRYPTO_DES_CIRCUITS_H

#include "crypto/des_tables.h"

namespace KEST {

template <typename Gate, int kSize>
struct SCircuit {
  static constexpr int kFirst = Gate::kFirst;
  static constexpr int kGates = kSize;

  Gate gates[kSize];
  unsigned char outputs[4];  // the wires, from the first to the last
};

// Any function of three wires: bit 4a + 2b + c of table.
struct STernaryGate {
  static constexpr int kFirst = 6;  // its wire, if it is the first gate

  unsigned char table, a, b, c;

  constexpr unsigned long long Of(const unsigned long long* wires) const {
    unsigned long long result = 0;
    for (int row = 0; row < 8; ++row) {
      if ((table >> row & 1) == 0) continue;
      result |= (row & 4 ? wires[a] : ~wires[a]) & (row & 2 ? wires[b] : ~wires[b]) &
                (row & 1 ? wires[c] : ~wires[c]);
    }
    return result;
  }
};

// The functions of two wires that processors have. Wire 6 is all ones, so that kXor negates.
enum EGate : unsigned char { kAnd, kOr, kXor, kAndNot };

struct SBinaryGate {
  static constexpr int kFirst = 7;

  EGate function;
  unsigned char a, b;

  constexpr unsigned long long Of(const unsigned long long* wires) const {
    switch (function) {
      case kAnd:
        return wires[a] & wires[b];
      case kOr:
        return wires[a] | wires[b];
      case kXor:
        return wires[a] ^ wires[b];
      default:
        return wires[a] & ~wires[b];
    }
  }
};

template <int kBox>
constexpr int kTernaryCircuit = 0;

template <>
inline constexpr SCircuit<STernaryGate, 27> kTernaryCircuit<0> = {
    {{0x68, 4, 5, 2},   {0x69, 3, 0, 6},    {0x3e, 5, 7, 0},   {0x66, 6, 4, 8},
     {0xac, 3, 9, 7},   {0x63, 6, 7, 4},    {0xe5, 2, 6, 10},  {0x68, 5, 11, 12},
     {0xac, 0, 11, 13}, {0xac, 1, 14, 10},  {0xd2, 1, 5, 8},   {0xa3, 10, 16, 6},
     {0xac, 3, 17, 16}, {0x86, 12, 16, 0},  {0x63, 9, 18, 19}, {0xac, 4, 20, 18},
     {0x79, 9, 3, 13},  {0xad, 15, 20, 10}, {0xac, 2, 22, 23}, {0x8e, 21, 12, 19},
     {0x2e, 2, 11, 25}, {0xac, 1, 24, 26},  {0x76, 27, 3, 13}, {0xd6, 7, 16, 28},
     {0xac, 6, 11, 26}, {0x36, 1, 13, 30},  {0xac, 4, 29, 31}},
    {21, 27, 32, 15}};

template <>
inline constexpr SCircuit<STernaryGate, 26> kTernaryCircuit<1> = {
    {{0x35, 5, 1, 2},   {0x96, 0, 3, 6},   {0x16, 3, 5, 1},   {0xab, 2, 6, 8},   {0xac, 0, 7, 9},
     {0x5e, 5, 7, 1},   {0x6b, 4, 2, 11},  {0xc6, 1, 2, 7},   {0xac, 0, 12, 13}, {0xac, 4, 10, 14},
     {0x6a, 0, 1, 13},  {0x4d, 13, 3, 16}, {0xac, 4, 16, 17}, {0x7c, 3, 4, 2},   {0x96, 16, 9, 19},
     {0xac, 5, 18, 20}, {0x6d, 6, 1, 21},  {0x68, 12, 3, 22}, {0x6c, 8, 4, 3},   {0x72, 23, 7, 24},
     {0xac, 0, 23, 25}, {0x4b, 1, 19, 7},  {0xa3, 14, 6, 27}, {0x71, 1, 13, 21}, {0x66, 26, 25, 29},
     {0xac, 4, 28, 30}},
    {26, 21, 31, 15}};

template <>
inline constexpr SCircuit<STernaryGate, 26> kTernaryCircuit<2> = {
    {{0xe4, 2, 3, 4},    {0x96, 1, 5, 6},    {0x59, 5, 3, 2},   {0x66, 6, 4, 8},
     {0x35, 7, 3, 9},    {0xb2, 2, 6, 10},   {0xac, 1, 9, 11},  {0xac, 0, 7, 12},
     {0xb4, 9, 5, 3},    {0x96, 10, 14, 12}, {0xac, 2, 14, 15}, {0x6a, 8, 13, 6},
     {0x4e, 16, 12, 17}, {0xac, 0, 18, 16},  {0xe1, 1, 19, 17}, {0x59, 20, 16, 7},
     {0xac, 4, 20, 21},  {0x6b, 19, 16, 2},  {0x58, 14, 5, 20}, {0xac, 4, 23, 24},
     {0xac, 0, 25, 22},  {0x8a, 22, 25, 7},  {0x96, 2, 0, 27},  {0x59, 22, 5, 28},
     {0xb8, 1, 23, 29},  {0xac, 3, 28, 30}},
    {19, 31, 26, 13}};

template <>
inline constexpr SCircuit<STernaryGate, 20> kTernaryCircuit<3> = {
    {{0x4b, 3, 2, 1},    {0xb6, 1, 6, 3},    {0xac, 4, 6, 7},   {0x23, 4, 8, 1},
     {0x1b, 2, 7, 9},    {0xac, 0, 8, 10},   {0x9e, 3, 8, 1},   {0x96, 9, 2, 12},
     {0xb6, 10, 13, 4},  {0xac, 0, 14, 13},  {0xac, 5, 11, 15}, {0x2e, 11, 5, 15},
     {0x26, 7, 4, 0},    {0x96, 10, 13, 18}, {0x1c, 19, 2, 9},  {0xac, 1, 19, 20},
     {0x94, 11, 20, 14}, {0x96, 9, 6, 22},   {0xac, 5, 23, 21}, {0x5c, 5, 21, 23}},
    {24, 25, 17, 16}};

template <>
inline constexpr SCircuit<STernaryGate, 28> kTernaryCircuit<4> = {
    {{0x76, 1, 4, 2},    {0xa6, 3, 5, 6},    {0x1b, 7, 3, 4},    {0xac, 1, 7, 8},
     {0xce, 4, 8, 9},    {0x4a, 1, 3, 10},   {0x39, 11, 2, 9},   {0xac, 5, 11, 12},
     {0xac, 0, 13, 9},   {0x61, 2, 4, 0},    {0x96, 5, 1, 15},   {0x3e, 12, 16, 14},
     {0xa3, 10, 0, 17},  {0xa3, 12, 15, 7},  {0xac, 2, 18, 19},  {0xac, 3, 20, 16},
     {0x9c, 5, 4, 0},    {0x4b, 13, 18, 22}, {0xb8, 22, 23, 15}, {0xac, 1, 23, 24},
     {0x6a, 6, 9, 22},   {0x52, 5, 15, 26},  {0xac, 3, 27, 25},  {0xe2, 1, 28, 0},
     {0x96, 21, 14, 29}, {0x9d, 17, 28, 30}, {0x8a, 0, 16, 31},  {0xac, 4, 32, 30}},
    {33, 21, 14, 28}};

template <>
inline constexpr SCircuit<STernaryGate, 26> kTernaryCircuit<5> = {
    {{0x69, 0, 4, 3},   {0xd4, 0, 3, 1},   {0x57, 7, 0, 6},   {0xac, 4, 7, 8},   {0xac, 5, 6, 9},
     {0x96, 6, 5, 1},   {0x25, 11, 5, 10}, {0xac, 4, 12, 11}, {0xac, 2, 13, 10}, {0x1c, 3, 13, 11},
     {0x4b, 6, 7, 15},  {0x35, 16, 10, 1}, {0x9a, 9, 11, 17}, {0x99, 14, 15, 3}, {0xac, 0, 18, 19},
     {0xac, 2, 16, 20}, {0xe6, 9, 18, 7},  {0xd6, 15, 5, 22}, {0x4d, 10, 9, 23}, {0x8b, 11, 4, 24},
     {0xac, 2, 23, 25}, {0xb8, 18, 5, 11}, {0x6a, 3, 16, 27}, {0x87, 28, 9, 16}, {0xa2, 13, 24, 29},
     {0xac, 2, 28, 30}},
    {14, 31, 26, 21}};

template <>
inline constexpr SCircuit<STernaryGate, 27> kTernaryCircuit<6> = {
    {{0xb5, 3, 2, 4},    {0x16, 5, 0, 6},    {0xb4, 7, 3, 4},    {0x9a, 0, 2, 8},
     {0xac, 5, 7, 9},    {0x96, 6, 0, 5},    {0x9b, 10, 2, 11},  {0xac, 1, 12, 10},
     {0xc9, 5, 1, 12},   {0x5a, 8, 10, 14},  {0xb1, 3, 2, 14},   {0xac, 4, 15, 16},
     {0xf4, 3, 1, 5},    {0xd2, 12, 15, 18}, {0xac, 0, 19, 17},  {0xd8, 6, 12, 1},
     {0x69, 4, 14, 13},  {0xac, 3, 21, 22},  {0x89, 14, 9, 16},  {0x63, 5, 19, 24},
     {0xac, 0, 23, 25},  {0x6a, 20, 1, 22},  {0xd1, 15, 27, 23}, {0xac, 5, 28, 27},
     {0x2e, 27, 16, 15}, {0x58, 4, 17, 30},  {0xac, 0, 31, 29}},
    {20, 26, 32, 13}};

template <>
inline constexpr SCircuit<STernaryGate, 27> kTernaryCircuit<7> = {
    {{0x1b, 1, 4, 2},   {0x63, 2, 1, 4},   {0xac, 0, 6, 7},   {0x47, 8, 1, 7},    {0xac, 3, 9, 8},
     {0x9e, 3, 6, 2},   {0x4b, 10, 0, 11}, {0xac, 5, 12, 10}, {0x4e, 11, 2, 1},   {0xa6, 4, 10, 14},
     {0x59, 15, 6, 10}, {0xac, 5, 16, 15}, {0x69, 6, 13, 7},  {0xc6, 5, 11, 18},  {0x66, 6, 4, 15},
     {0xac, 5, 19, 20}, {0xac, 0, 21, 17}, {0x2b, 5, 6, 2},   {0x4b, 21, 13, 23}, {0xf6, 7, 2, 24},
     {0xd6, 16, 6, 25}, {0xac, 0, 26, 24}, {0xcb, 6, 22, 26}, {0x96, 18, 27, 28}, {0xb5, 29, 28, 7},
     {0x96, 12, 9, 30}, {0xac, 2, 29, 31}},
    {22, 13, 27, 32}};

template <int kBox>
constexpr int kBinaryCircuit = 0;

template <>
inline constexpr SCircuit<SBinaryGate, 61> kBinaryCircuit<0> = {
    {{kXor, 3, 5},      {kAnd, 3, 5},   {kXor, 8, 2},      {kAndNot, 9, 4},   {kXor, 7, 10},
     {kXor, 4, 3},      {kOr, 12, 10},  {kXor, 8, 6},      {kAndNot, 14, 2},  {kXor, 13, 15},
     {kAndNot, 16, 0},  {kXor, 11, 17}, {kOr, 15, 3},      {kOr, 7, 2},       {kAnd, 20, 13},
     {kAnd, 21, 0},     {kXor, 19, 22}, {kAnd, 23, 1},     {kXor, 18, 24},    {kAnd, 7, 19},
     {kXor, 26, 1},     {kXor, 9, 25},  {kAndNot, 20, 27}, {kAnd, 29, 3},     {kXor, 28, 30},
     {kAnd, 31, 4},     {kXor, 27, 32}, {kXor, 25, 3},     {kOr, 34, 18},     {kXor, 31, 19},
     {kAndNot, 36, 4},  {kXor, 35, 37}, {kAndNot, 38, 0},  {kXor, 33, 39},    {kAnd, 37, 24},
     {kXor, 41, 9},     {kXor, 11, 5},  {kOr, 43, 32},     {kAndNot, 44, 1},  {kXor, 42, 45},
     {kXor, 19, 7},     {kXor, 47, 38}, {kAndNot, 34, 43}, {kXor, 49, 13},    {kAnd, 50, 1},
     {kXor, 48, 51},    {kAnd, 52, 0},  {kXor, 46, 53},    {kAndNot, 16, 50}, {kXor, 55, 27},
     {kAndNot, 24, 50}, {kXor, 57, 23}, {kAnd, 58, 2},     {kXor, 56, 59},    {kAnd, 34, 18},
     {kAndNot, 61, 59}, {kXor, 47, 21}, {kAnd, 63, 4},     {kXor, 62, 64},    {kAndNot, 65, 0},
     {kXor, 60, 66}},
    {25, 67, 40, 54}};

template <>
inline constexpr SCircuit<SBinaryGate, 54> kBinaryCircuit<1> = {
    {{kXor, 4, 0},     {kXor, 7, 5},     {kOr, 5, 8},      {kAnd, 9, 4},      {kAnd, 10, 3},
     {kXor, 8, 11},    {kAnd, 10, 0},    {kXor, 13, 6},    {kAndNot, 14, 2},  {kXor, 12, 15},
     {kOr, 3, 10},     {kOr, 2, 5},      {kXor, 18, 10},   {kAndNot, 19, 0},  {kXor, 17, 20},
     {kAnd, 21, 1},    {kXor, 16, 22},   {kXor, 21, 16},   {kXor, 24, 2},     {kAndNot, 23, 8},
     {kAndNot, 9, 26}, {kAnd, 27, 1},    {kXor, 25, 28},   {kAndNot, 1, 23},  {kXor, 30, 14},
     {kOr, 3, 5},      {kXor, 32, 23},   {kAndNot, 33, 0}, {kXor, 31, 34},    {kAnd, 35, 4},
     {kXor, 29, 36},   {kOr, 16, 5},     {kXor, 38, 1},    {kAndNot, 21, 37}, {kOr, 40, 3},
     {kAndNot, 41, 4}, {kXor, 39, 42},   {kAnd, 0, 30},    {kAndNot, 3, 31},  {kXor, 45, 23},
     {kAnd, 46, 5},    {kXor, 44, 47},   {kAndNot, 48, 2}, {kXor, 43, 49},    {kXor, 3, 8},
     {kXor, 11, 39},   {kAndNot, 52, 2}, {kXor, 51, 53},   {kXor, 18, 44},    {kOr, 55, 7},
     {kAnd, 1, 3},     {kXor, 56, 57},   {kAndNot, 58, 5}, {kXor, 54, 59}},
    {23, 60, 50, 37}};

template <>
inline constexpr SCircuit<SBinaryGate, 54> kBinaryCircuit<2> = {
    {{kXor, 5, 2},      {kOr, 5, 3},       {kAnd, 8, 0},     {kXor, 7, 9},   {kXor, 2, 3},
     {kOr, 11, 0},      {kAndNot, 12, 4},  {kXor, 10, 13},   {kXor, 14, 3},  {kAndNot, 15, 7},
     {kAnd, 16, 0},     {kXor, 6, 17},     {kAnd, 18, 1},    {kXor, 14, 19}, {kXor, 4, 0},
     {kXor, 21, 11},    {kXor, 16, 11},    {kOr, 23, 0},     {kAnd, 24, 5},  {kXor, 22, 25},
     {kAndNot, 18, 12}, {kOr, 27, 2},      {kAndNot, 15, 5}, {kAnd, 29, 4},  {kXor, 28, 30},
     {kAndNot, 31, 1},  {kXor, 26, 32},    {kXor, 1, 0},     {kXor, 34, 8},  {kAndNot, 20, 14},
     {kOr, 36, 11},     {kAndNot, 37, 4},  {kXor, 35, 38},   {kXor, 5, 36},  {kAnd, 40, 21},
     {kXor, 39, 10},    {kAnd, 42, 25},    {kAnd, 43, 0},    {kXor, 41, 44}, {kAnd, 45, 3},
     {kXor, 39, 46},    {kAndNot, 33, 20}, {kXor, 48, 2},    {kXor, 15, 39}, {kAnd, 50, 1},
     {kXor, 49, 51},    {kXor, 42, 33},    {kXor, 53, 49},   {kAnd, 39, 28}, {kXor, 55, 54},
     {kAndNot, 56, 0},  {kXor, 54, 57},    {kAnd, 58, 4},    {kXor, 52, 59}},
    {33, 47, 60, 20}};

template <>
inline constexpr SCircuit<SBinaryGate, 41> kBinaryCircuit<3> = {
    {{kXor, 4, 1},     {kAndNot, 6, 2}, {kXor, 7, 8},     {kOr, 7, 2},    {kXor, 10, 4},
     {kAndNot, 11, 3}, {kXor, 9, 12},   {kOr, 10, 13},    {kOr, 4, 9},    {kAndNot, 15, 1},
     {kAnd, 16, 3},    {kXor, 14, 17},  {kAndNot, 18, 0}, {kXor, 13, 19}, {kAndNot, 20, 4},
     {kXor, 21, 0},    {kAnd, 22, 3},   {kXor, 9, 23},    {kOr, 12, 0},   {kAndNot, 25, 13},
     {kAndNot, 26, 2}, {kXor, 24, 27},  {kAnd, 28, 5},    {kXor, 20, 29}, {kXor, 5, 28},
     {kXor, 31, 30},   {kXor, 28, 1},   {kAnd, 33, 18},   {kXor, 1, 3},   {kAndNot, 35, 0},
     {kXor, 34, 36},   {kXor, 11, 34},  {kXor, 38, 20},   {kOr, 37, 19},  {kAndNot, 40, 22},
     {kAndNot, 41, 4}, {kXor, 39, 42},  {kAndNot, 43, 5}, {kXor, 37, 44}, {kXor, 43, 45},
     {kXor, 46, 5}},
    {30, 32, 47, 45}};

template <>
inline constexpr SCircuit<SBinaryGate, 59> kBinaryCircuit<4> = {
    {{kXor, 5, 4},     {kXor, 7, 0},      {kXor, 3, 4},     {kAnd, 9, 2},      {kXor, 8, 10},
     {kXor, 10, 6},    {kXor, 4, 2},      {kOr, 13, 0},     {kAnd, 14, 3},     {kXor, 12, 15},
     {kAndNot, 16, 1}, {kXor, 11, 17},    {kAnd, 0, 13},    {kXor, 18, 13},    {kOr, 20, 3},
     {kXor, 15, 1},    {kAndNot, 22, 13}, {kAnd, 23, 0},    {kXor, 21, 24},    {kAndNot, 25, 4},
     {kXor, 19, 26},   {kAndNot, 27, 5},  {kXor, 18, 28},   {kXor, 19, 22},    {kXor, 30, 7},
     {kOr, 23, 26},    {kXor, 32, 17},    {kAnd, 33, 3},    {kXor, 31, 34},    {kAndNot, 11, 25},
     {kOr, 36, 10},    {kXor, 20, 7},     {kAndNot, 14, 1}, {kXor, 38, 39},    {kAndNot, 40, 0},
     {kXor, 37, 41},   {kAnd, 42, 5},     {kXor, 35, 43},   {kOr, 27, 9},      {kXor, 45, 31},
     {kXor, 37, 44},   {kAnd, 47, 32},    {kAndNot, 0, 11}, {kXor, 49, 42},    {kAndNot, 50, 1},
     {kXor, 48, 51},   {kAndNot, 52, 3},  {kXor, 46, 53},   {kAndNot, 52, 18}, {kOr, 55, 19},
     {kOr, 28, 4},     {kXor, 57, 52},    {kAnd, 58, 1},    {kXor, 56, 59},    {kOr, 5, 36},
     {kAnd, 61, 0},    {kXor, 41, 62},    {kAndNot, 63, 3}, {kXor, 60, 64}},
    {44, 54, 65, 29}};

template <>
inline constexpr SCircuit<SBinaryGate, 57> kBinaryCircuit<5> = {
    {{kXor, 1, 0},     {kXor, 7, 5},     {kAnd, 6, 3},      {kXor, 8, 9},     {kAnd, 8, 0},
     {kXor, 11, 1},    {kAndNot, 12, 2}, {kXor, 10, 13},    {kAndNot, 7, 14}, {kXor, 15, 2},
     {kAnd, 12, 1},    {kXor, 16, 17},   {kOr, 5, 11},      {kAnd, 19, 3},    {kXor, 18, 20},
     {kAnd, 21, 4},    {kXor, 14, 22},   {kAndNot, 21, 12}, {kXor, 24, 4},    {kOr, 1, 15},
     {kAnd, 2, 4},     {kXor, 26, 27},   {kAnd, 28, 0},     {kXor, 25, 29},   {kOr, 5, 14},
     {kAnd, 31, 17},   {kOr, 20, 18},    {kXor, 33, 32},    {kAndNot, 34, 4}, {kXor, 32, 35},
     {kAnd, 36, 3},    {kXor, 30, 37},   {kXor, 2, 6},      {kAndNot, 39, 4}, {kXor, 10, 40},
     {kOr, 23, 26},    {kXor, 42, 29},   {kAnd, 43, 0},     {kXor, 41, 44},   {kOr, 13, 44},
     {kOr, 46, 28},    {kAnd, 30, 16},   {kAnd, 48, 20},    {kAnd, 49, 1},    {kXor, 47, 50},
     {kAnd, 51, 3},    {kXor, 45, 52},   {kXor, 2, 10},     {kOr, 54, 50},    {kOr, 45, 16},
     {kXor, 56, 36},   {kAndNot, 57, 4}, {kXor, 55, 58},    {kXor, 12, 46},   {kOr, 60, 27},
     {kAndNot, 61, 1}, {kXor, 59, 62}},
    {63, 53, 23, 38}};

template <>
inline constexpr SCircuit<SBinaryGate, 56> kBinaryCircuit<6> = {
    {{kXor, 3, 2},   {kXor, 7, 5},     {kAnd, 7, 4},     {kXor, 9, 2},      {kAndNot, 10, 5},
     {kXor, 8, 11},  {kXor, 1, 11},    {kAndNot, 3, 4},  {kXor, 13, 14},    {kAnd, 15, 1},
     {kXor, 12, 16}, {kXor, 17, 15},   {kOr, 18, 4},     {kOr, 13, 7},      {kAnd, 20, 10},
     {kAnd, 21, 5},  {kXor, 5, 22},    {kAnd, 23, 2},    {kXor, 19, 24},    {kAndNot, 25, 0},
     {kXor, 17, 26}, {kAndNot, 15, 9}, {kAnd, 8, 4},     {kOr, 29, 22},     {kAndNot, 30, 2},
     {kXor, 28, 31}, {kAnd, 15, 20},   {kXor, 33, 26},   {kAnd, 17, 33},    {kAndNot, 2, 35},
     {kAnd, 36, 4},  {kXor, 34, 37},   {kAndNot, 38, 0}, {kXor, 32, 39},    {kXor, 13, 0},
     {kXor, 41, 4},  {kXor, 1, 12},    {kAnd, 43, 2},    {kXor, 42, 44},    {kAndNot, 18, 37},
     {kAnd, 28, 45}, {kAnd, 47, 0},    {kXor, 46, 48},   {kAnd, 49, 5},     {kXor, 45, 50},
     {kXor, 25, 38}, {kXor, 52, 40},   {kXor, 35, 25},   {kAndNot, 54, 41}, {kAnd, 55, 5},
     {kXor, 53, 56}, {kXor, 56, 23},   {kAndNot, 58, 1}, {kXor, 6, 59},     {kAndNot, 60, 0},
     {kXor, 57, 61}},
    {40, 62, 27, 51}};

template <>
inline constexpr SCircuit<SBinaryGate, 52> kBinaryCircuit<7> = {
    {{kXor, 0, 2},     {kAnd, 7, 0},     {kOr, 8, 1},      {kAndNot, 9, 4},  {kXor, 7, 10},
     {kXor, 6, 4},     {kOr, 0, 4},      {kAnd, 13, 1},    {kXor, 12, 14},   {kAndNot, 15, 3},
     {kXor, 11, 16},   {kAndNot, 7, 4},  {kOr, 18, 3},     {kXor, 2, 4},     {kAndNot, 20, 9},
     {kAnd, 9, 3},     {kXor, 21, 22},   {kAndNot, 23, 1}, {kXor, 19, 24},   {kAnd, 25, 5},
     {kXor, 17, 26},   {kXor, 22, 5},    {kAndNot, 17, 4}, {kXor, 28, 29},   {kXor, 11, 30},
     {kAndNot, 31, 5}, {kAnd, 32, 0},    {kXor, 30, 33},   {kOr, 4, 33},     {kAndNot, 35, 3},
     {kXor, 24, 36},   {kAndNot, 37, 1}, {kXor, 34, 38},   {kXor, 5, 17},    {kXor, 10, 0},
     {kXor, 41, 33},   {kXor, 10, 25},   {kAnd, 43, 3},    {kXor, 42, 44},   {kAndNot, 45, 5},
     {kXor, 40, 46},   {kXor, 39, 42},   {kXor, 16, 20},   {kAndNot, 49, 1}, {kXor, 48, 50},
     {kXor, 6, 0},     {kXor, 8, 28},    {kAnd, 53, 11},   {kAnd, 54, 1},    {kXor, 52, 55},
     {kAnd, 56, 5},    {kXor, 51, 57}},
    {47, 39, 58, 27}};

// Runs a circuit on all 64 inputs at once, each in one bit of the words.
template <typename Gate, int kSize>
constexpr bool IsDesBox(const SCircuit<Gate, kSize>& circuit, const unsigned char (&box)[4][16]) {
  unsigned long long wires[Gate::kFirst + kSize] = {};
  wires[6] = ~0ull;
  for (unsigned int input = 0; input < 64; ++input) {
    for (int k = 0; k < 6; ++k) wires[k] |= (input >> (5 - k) & 1ull) << input;
  }
  for (int gate = 0; gate < kSize; ++gate) {
    wires[Gate::kFirst + gate] = circuit.gates[gate].Of(wires);
  }
  for (unsigned int input = 0; input < 64; ++input) {
    unsigned int output = 0;
    for (unsigned char wire : circuit.outputs) output = output << 1 | (wires[wire] >> input & 1);
    if (output != DesBoxOutput(box, input)) return false;
  }
  return true;
}

template <int kBox>
constexpr bool kCircuitsAreRight = IsDesBox(kTernaryCircuit<kBox>, kDesBoxes[kBox]) &&
                                   IsDesBox(kBinaryCircuit<kBox>, kDesBoxes[kBox]);
static_assert(kCircuitsAreRight<0> && kCircuitsAreRight<1> && kCircuitsAreRight<2> &&
              kCircuitsAreRight<3> && kCircuitsAreRight<4> && kCircuitsAreRight<5> &&
              kCircuitsAreRight<6> && kCircuitsAreRight<7>);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_DES_CIRCUITS_H
