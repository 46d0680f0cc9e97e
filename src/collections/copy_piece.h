// Copying a few bytes, for which a call of memcpy would take longer than the copying.

#ifndef KEST_SRC_COLLECTIONS_COPY_PIECE_H
#define KEST_SRC_COLLECTIONS_COPY_PIECE_H

#include <stddef.h>

namespace KEST {

// What the versions take: nothing else, so that they call nothing and need no stack.
constexpr size_t kMinPiece = 16;
constexpr size_t kMaxPiece = 64;

void CopyPiecePlain(unsigned char* dest, const unsigned char* source, size_t count);
void CopyPieceSse2(unsigned char* dest, const unsigned char* source, size_t count);

}  // namespace KEST

#endif  // KEST_SRC_COLLECTIONS_COPY_PIECE_H
