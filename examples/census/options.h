// The command line.

#ifndef CENSUS_OPTIONS_H
#define CENSUS_OPTIONS_H

#include "kest/string.h"

namespace census {

struct Options {
  enum { kMaxWorkers = 64 };
  enum EAction { kRun, kShowHelp, kShowVersion, kRefuse };

  KEST::TBstr directory;
  KEST::TBstr output;
  KEST::TBstr pattern;  // empty for every name
  KEST::TBstr system;   // the folder that stands for the machine's root; empty for the root itself
  KEST::TBstr formats;  // the folder of modules; empty for the one beside the program
  KEST::TBstr key;      // with signature: nothing is counted, one signature is checked
  KEST::TBstr signature;
  bool directoryGiven;
  int workers;
  bool seal;

  Options();
  // Reads the command line; with kRefuse, error says what is wrong with it.
  EAction Parse(int argc, const char* const* argv, KEST::TBstr* error);

 private:
  EAction ParseOption(const KEST::TBstr& name, const KEST::TBstr& value, KEST::TBstr* error);
};

extern const char* const kHelpText;

}  // namespace census

#endif  // CENSUS_OPTIONS_H
