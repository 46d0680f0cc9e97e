// TFifoBuffer against std::deque.

#include <deque>

#include "fuzz/steps.h"
#include "kest/collections.h"

namespace {

using kest_fuzz::Bytes;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;

constexpr int kMostBytes = 100;  // of a read or a write

class Fifo {
 public:
  Fifo(StepInput&, Memory& all) : memory(all) {}

  void Step(int step, StepInput& in) {
    const int count = in.Number(kMostBytes);
    if (step % 2 == 0) {
      Write(count, in);
    } else {
      Read(count);
    }
    FUZZ_CHECK(fifo.GetLength() == static_cast<int>(model.size()));
    FUZZ_CHECK(fifo.GetCapacity() == capacity);
  }

 private:
  // A count that no memory is there for is refused before a byte is read.
  void Write(int count, StepInput& in) {
    static kest_fuzz::Guarded<unsigned char, kMostBytes + 2> room;
    const int there = count <= kMostBytes + 2 ? std::max(count, 0) : 0;
    unsigned char* source = room.Take(static_cast<size_t>(there));
    for (int i = 0; i < there; ++i) source[i] = i < 4 ? in.Byte() : static_cast<unsigned char>(i);
    const int written = fifo.Write(source, count);
    FUZZ_CHECK(written == (memory.Refused() ? 0 : there));
    model.insert(model.end(), source, source + written);
    capacity = std::max(capacity, static_cast<int>(model.size()));
  }

  void Read(int count) {
    static kest_fuzz::Guarded<unsigned char, 1 << 16> room;
    const int expected = std::clamp(count, 0, static_cast<int>(model.size()));
    unsigned char* destination = room.Take(static_cast<size_t>(expected));
    FUZZ_CHECK(fifo.Read(destination, count) == expected);
    FUZZ_CHECK(std::equal(destination, destination + expected, model.begin()));
    model.erase(model.begin(), model.begin() + expected);
  }

  Memory& memory;
  KEST::TFifoBuffer fifo;
  std::deque<unsigned char> model;
  int capacity = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Fifo>(data, size, 60);
}
