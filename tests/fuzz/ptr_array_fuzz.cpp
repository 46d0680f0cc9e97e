// Two TPtrArray against std::vector, capacities and growth included.

#include "collections/element.h"
#include "fuzz/steps.h"
#include "kest/collections.h"

namespace {

using KEST::TPtrArray;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;
using kest_test::Elements;

constexpr int kMostElements = 200;  // a longer array is emptied before the next step
// More than this many do not fit 32 bits, so that no memory is even asked for.
constexpr long long kAddressable = UINT_MAX / sizeof(void*);

struct SModel {
  Elements elements;
  int capacity = 0;
  int growBy = 0;

  int Size() const { return static_cast<int>(elements.size()); }

  // The capacity that a size takes.
  long long CapacityFor(int size, int step) const {
    if (size == 0) return 0;
    if (size <= capacity || capacity == 0) return std::max(size, capacity);
    const int grown = step != 0 ? step : std::clamp(Size() / 8, 4, 1024);
    return std::max(static_cast<long long>(capacity) + grown, static_cast<long long>(size));
  }
  // False, with nothing changed, without memory.
  bool SetSize(long long size, int step, bool refused) {
    const int wanted = static_cast<int>(std::min<long long>(size, INT_MAX));
    const long long needed = CapacityFor(wanted, step);
    if (refused || needed > kAddressable) return false;
    elements.resize(static_cast<size_t>(wanted));
    capacity = static_cast<int>(needed);
    growBy = step;
    return true;
  }
};

class Arrays {
 public:
  Arrays(StepInput&, Memory& all) : memory(all) {}

  void Step(int step, StepInput& in) {
    self = step % 2;
    if (Model().Size() > kMostElements) {
      Self().RemoveAll();
      SetSize(0);
    }
    Change(step / 2 % 11, in);
    IsAsItsModel(0);
    IsAsItsModel(1);
  }

 private:
  TPtrArray& Self() { return arrays[self]; }
  SModel& Model() { return models[self]; }
  bool SetSize(long long size) { return SetSize(size, Model().growBy); }
  bool SetSize(long long size, int step) { return Model().SetSize(size, step, memory.Refused()); }

  void Change(int kind, StepInput& in) {
    Elements& elements = Model().elements;
    const int size = Model().Size();
    const int index = in.Number(30), count = in.Number(10);
    void* const element = kest_test::Element(in.Byte());
    const int source = in.Below(2);
    const Elements added = models[source].elements;
    switch (kind) {
      case 0:
        Self().SetSize(index, count);
        if (index >= 0) SetSize(index, count != -1 ? count : Model().growBy);
        break;
      case 1:
        Self().FreeExtra();
        if (!memory.Refused()) Model().capacity = size;
        break;
      case 2:
        Self().SetAtGrow(index, element);
        if (index < 0 || (index >= size && !SetSize(index + 1LL))) break;
        elements[static_cast<size_t>(index)] = element;
        break;
      case 3:
        Self().InsertAt(index, element, count);
        if (count >= 0)
          Insert(index, Elements(static_cast<size_t>(std::min(count, 100)), element), count);
        break;
      case 4: {
        const bool none = in.Below(8) == 0;
        Self().InsertAt(index, none ? nullptr : &arrays[source]);
        if (!none && !added.empty()) Insert(index, added, static_cast<int>(added.size()));
        break;
      }
      case 5:
        Self().RemoveAt(index, count);
        if (index < 0 || count < 0 || index >= size) break;
        elements.erase(elements.begin() + index,
                       elements.begin() + index + std::min(count, size - index));
        break;
      case 6:
        FUZZ_CHECK(Self().Append(arrays[source]) == size);
        if (!added.empty()) Insert(size, added, static_cast<int>(added.size()));
        break;
      case 7:
        Self().Copy(arrays[source]);
        if (SetSize(static_cast<int>(added.size()))) elements = added;
        break;
      case 8: {
        const int place = Self().Add(element);
        if (SetSize(size + 1LL)) elements.back() = element;
        FUZZ_CHECK(place == (Model().Size() > size ? size : -1));
        break;
      }
      case 9:
        if (index < 0 || index >= size) break;
        (source == 0 ? Self()[index] : Self().ElementAt(index)) = element;
        elements[static_cast<size_t>(index)] = element;
        break;
      default:
        Self().RemoveAll();
        SetSize(0);
    }
  }

  // Before index, behind nulls up to it. count is the number of inserted ones, of which there may
  // be less when they are more than any memory.
  void Insert(int index, const Elements& inserted, int count) {
    if (index < 0) return;
    Elements result = Model().elements;
    if (!SetSize(static_cast<long long>(std::max(index, Model().Size())) + count)) return;
    if (index > static_cast<int>(result.size())) result.resize(static_cast<size_t>(index));
    result.insert(result.begin() + index, inserted.begin(), inserted.end());
    Model().elements = result;
  }

  void IsAsItsModel(int which) const {
    const TPtrArray& array = arrays[which];
    const SModel& model = models[which];
    FUZZ_CHECK(array.GetSize() == model.Size());
    FUZZ_CHECK(array.IsEmpty() == model.elements.empty());
    FUZZ_CHECK(array.GetMaxSize() == model.capacity);
    for (int i = 0; i < model.Size(); ++i) {
      FUZZ_CHECK(array[i] == model.elements[static_cast<size_t>(i)]);
    }
  }

  Memory& memory;
  TPtrArray arrays[2];
  SModel models[2];
  int self = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Arrays>(data, size, 60);
}
