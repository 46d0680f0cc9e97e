// The look at a text that finds its encoding, in versions for the levels of the processor.

#ifndef KEST_SRC_STRING_ENCODING_LEVELS_H
#define KEST_SRC_STRING_ENCODING_LEVELS_H

namespace KEST {

// The bits that are set in any of count units; with a bit above the lowest eight, maybe not all.
unsigned int BitsOfUnitsPlain(const unsigned short* units, int count);
unsigned int BitsOfUnitsSse2(const unsigned short* units, int count);
unsigned int BitsOfUnitsAvx2(const unsigned short* units, int count);

}  // namespace KEST

#endif  // KEST_SRC_STRING_ENCODING_LEVELS_H
