// A counter that threads wait on: the hand-over between those who make work and those who do it.

#ifndef CENSUS_TOKENS_H
#define CENSUS_TOKENS_H

#include "kest/thread.h"

namespace census {

class Tokens {
 public:
  explicit Tokens(int count);
  ~Tokens();
  Tokens(const Tokens&) = delete;
  Tokens& operator=(const Tokens&) = delete;

  // Waits for a token and takes it. False when there will be none: closed and used up.
  bool Take();
  void Give();

  // No more will be given; those that are there may still be taken.
  void Close();
  // Nobody gets one any more.
  void Revoke();
  bool IsRevoked();

 private:
  KEST::TCondVar changed;  // its lock guards the rest
  int count;
  bool closed;
  bool revoked;
};

}  // namespace census

#endif  // CENSUS_TOKENS_H
