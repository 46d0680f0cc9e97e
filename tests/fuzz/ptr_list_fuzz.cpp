// Two TPtrList against a std::vector of positions and elements.

#include "collections/element.h"
#include "fuzz/steps.h"
#include "kest/collections.h"

namespace {

using KEST::__POSITION;
using KEST::TPtrList;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;
using kest_test::Elements;

constexpr int kMostElements = 100;  // a longer list is emptied before the next step
constexpr int kMostOfABlock = 100;  // larger blocks find no memory

struct SModel {
  std::vector<__POSITION*> positions;
  Elements elements;

  int Size() const { return static_cast<int>(elements.size()); }
};

class Lists {
 public:
  Lists(StepInput& in, Memory& all) : memory(all), blockSize(in.Number(6)) {}

  void Step(int step, StepInput& in) {
    self = step % 2;
    if (Model().Size() > kMostElements) {
      Self().RemoveAll();
      Model() = SModel();
    }
    Change(step / 2 % 13, in);
    IsAsItsModel(0);
    IsAsItsModel(1);
    // An emptied list holds no memory.
    if (lists[0].IsEmpty() && lists[1].IsEmpty()) FUZZ_CHECK(memory.Live() == 0);
  }

 private:
  TPtrList& Self() { return lists[self]; }
  SModel& Model() { return models[self]; }

  // An add at index that gave position, null without memory.
  void Added(int index, __POSITION* position, void* element) {
    if (position == nullptr) return FailedForWantOfMemory();
    FUZZ_CHECK(!memory.Refused());
    Model().positions.insert(Model().positions.begin() + index, position);
    Model().elements.insert(Model().elements.begin() + index, element);
  }
  void Removed(int index) {
    Model().positions.erase(Model().positions.begin() + index);
    Model().elements.erase(Model().elements.begin() + index);
  }
  void FailedForWantOfMemory() const { FUZZ_CHECK(memory.Refused() || blockSize > kMostOfABlock); }

  // All of the elements at index, or none.
  void AddedAll(int index, const Elements& added) {
    if (!added.empty() && Self().GetCount() == Model().Size()) return FailedForWantOfMemory();
    FUZZ_CHECK(!memory.Refused());
    for (int i = 0; i < static_cast<int>(added.size()); ++i) {
      Added(index + i, Self().FindIndex(index + i), added[static_cast<size_t>(i)]);
    }
  }

  void Change(int kind, StepInput& in) {
    const int size = Model().Size();
    void* const element = kest_test::Element(static_cast<uintptr_t>(in.Below(16)));
    // An element of the list, or none: size.
    const int index = in.Below(size + 1);
    const size_t at = static_cast<size_t>(index);
    __POSITION* const position = index < size ? Model().positions[at] : nullptr;
    const int source = in.Below(2);
    const Elements added = models[source].elements;
    switch (kind) {
      case 0:
        return Added(0, Self().AddHead(element), element);
      case 1:
        return Added(size, Self().AddTail(element), element);
      case 2:
        Self().AddHead(lists[source]);
        return AddedAll(0, added);
      case 3:
        Self().AddTail(lists[source]);
        return AddedAll(size, added);
      case 4:
        FUZZ_CHECK(Self().RemoveHead() == (size != 0 ? Model().elements.front() : nullptr));
        if (size != 0) Removed(0);
        break;
      case 5:
        FUZZ_CHECK(Self().RemoveTail() == (size != 0 ? Model().elements.back() : nullptr));
        if (size != 0) Removed(size - 1);
        break;
      case 6:
        return Added(index < size ? index : 0, Self().InsertBefore(position, element), element);
      case 7:
        return Added(index < size ? index + 1 : size, Self().InsertAfter(position, element),
                     element);
      case 8:
        Self().RemoveAt(position);
        if (position != nullptr) Removed(index);
        break;
      case 9:
        Self().RemoveAll();
        Model() = SModel();
        break;
      case 10: {
        const int wanted = in.Number(20);
        const bool inside = wanted >= 0 && wanted < size;
        FUZZ_CHECK(Self().FindIndex(wanted) ==
                   (inside ? Model().positions[static_cast<size_t>(wanted)] : nullptr));
        break;
      }
      case 11: {
        // A null position starts at the head.
        const auto first = Model().elements.begin() + (index < size ? index + 1 : 0);
        const auto found = std::find(first, Model().elements.end(), element);
        FUZZ_CHECK(Self().Find(element, position) ==
                   (found != Model().elements.end()
                        ? Model().positions[static_cast<size_t>(found - Model().elements.begin())]
                        : nullptr));
        break;
      }
      default:
        if (position == nullptr) break;
        Self().SetAt(position, element);
        Model().elements[at] = element;
        FUZZ_CHECK(Self().GetAt(position) == element);
    }
  }

  // In both directions.
  void IsAsItsModel(int which) const {
    const TPtrList& list = lists[which];
    const SModel& model = models[which];
    FUZZ_CHECK(list.GetCount() == model.Size());
    FUZZ_CHECK(list.IsEmpty() == model.elements.empty());
    FUZZ_CHECK(list.GetHead() == (model.elements.empty() ? nullptr : model.elements.front()));
    FUZZ_CHECK(list.GetTail() == (model.elements.empty() ? nullptr : model.elements.back()));
    __POSITION* forward = list.GetHeadPosition();
    __POSITION* backward = list.GetTailPosition();
    for (size_t i = 0; i < model.elements.size(); ++i) {
      const size_t last = model.elements.size() - 1 - i;
      FUZZ_CHECK(forward == model.positions[i] && backward == model.positions[last]);
      FUZZ_CHECK(list.GetNext(forward) == model.elements[i]);
      FUZZ_CHECK(list.GetPrev(backward) == model.elements[last]);
    }
    FUZZ_CHECK(forward == nullptr && backward == nullptr);
  }

  Memory& memory;
  const int blockSize;
  TPtrList lists[2] = {TPtrList(blockSize), TPtrList(blockSize)};
  SModel models[2];
  int self = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Lists>(data, size, 60);
}
