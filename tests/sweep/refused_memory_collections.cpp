// Operations of kest/collections.h that ask for memory.

#include "kest/collections.h"

#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

void* Element(int n) { return reinterpret_cast<void*>(static_cast<intptr_t>(n)); }
int Number(const void* element) { return static_cast<int>(reinterpret_cast<intptr_t>(element)); }

std::string Contents(const TPtrArray& array) {
  std::string said = "[";
  for (int i = 0; i < array.GetSize(); ++i) said += std::to_string(Number(array[i])) + " ";
  return said + "]";
}

std::string Contents(const TPtrList& list) {
  std::string said = "[";
  for (__POSITION* at = list.GetHeadPosition(); at != nullptr;) {
    said += std::to_string(Number(list.GetNext(at))) + " ";
  }
  return said + "]";
}

void Fill(TPtrArray& array) {
  array.RemoveAll();
  for (int n : {1, 2, 3}) array.Add(Element(n));
  array.FreeExtra();
}

void Fill(TPtrList& list) {
  list.RemoveAll();
  for (int n : {1, 2, 3}) list.AddTail(Element(n));
}

// An operation on a container of the elements 1, 2 and 3 whose memory is full.
template <typename Container, typename Operation>
auto On(Operation operation) {
  return [operation](Attempts& attempts) {
    Container container;
    attempts([&] { Fill(container); },
             [&] {
               operation(container);
               return Contents(container);
             });
  };
}
template <typename Operation>
auto OnArray(Operation operation) {
  return On<TPtrArray>(operation);
}

// Every node takes a block of its own.
struct OneNodeList : TPtrList {
  OneNodeList() : TPtrList(1) {}
};
template <typename Operation>
auto OnList(Operation operation) {
  return On<OneNodeList>(operation);
}

// What the maps differ in: the key 5, and how many requests its copy takes.
template <typename Map>
struct Key;
template <>
struct Key<TPtrFromPtrMap> {
  using Result = void*;
  static void* Five() { return Element(5); }
};
template <>
struct Key<TPtrFromBstrMap> {
  using Result = TBstr;
  static const unsigned short* Five() { return KEST_TEXT("5"); }
};
template <>
struct Key<TPtrFromGuidMap> {
  using Result = _GUID;
  static _GUID Five() { return {5, 0, 0, {}}; }
};

template <typename Map>
int ValueOfFive(const Map& map) {
  void* value = Element(-1);
  map.Lookup(Key<Map>::Five(), value);
  return Number(value);
}

// name is the class, key the argument as the symbols have it.
template <typename Map>
std::vector<RefusedMemoryRow> MapRows(const std::string& name, const std::string& key) {
  return {
      {{name + "::SetAt(" + key + ", void*)"},
       "true 1 7",
       {"false 0 -1"},
       [](Attempts& attempts) {
         Map map;
         attempts([&] { map.RemoveAll(); },
                  [&] {
                    const bool set = map.SetAt(Key<Map>::Five(), Element(7));
                    return Said(set, map.GetCount(), ValueOfFive(map));
                  });
       }},
      {{name + "::operator[](" + key + ")"},
       "1 7",
       {"0 -1"},
       [](Attempts& attempts) {
         Map map;
         attempts([&] { map.RemoveAll(); },
                  [&] {
                    map[Key<Map>::Five()] = Element(7);
                    return Said(map.GetCount(), ValueOfFive(map));
                  });
       }},
      {{name + "::NewAssoc()"},
       "there 1",
       {"null 0"},
       [](Attempts& attempts) {
         Map map;
         attempts([&] {
           typename Map::SAssoc* const assoc = map.NewAssoc();
           const std::string said = Said(assoc, map.GetCount());
           if (assoc != nullptr) map.FreeAssoc(assoc);
           return said;
         });
       }},
      // The buckets come later when they cannot come now.
      {{name + "::InitHashTable(unsigned int, bool)"},
       "31",
       {"31"},
       [](Attempts& attempts) {
         Map map;
         attempts([&] {
           map.InitHashTable(31, true);
           return Said(static_cast<int>(map.GetHashTableSize()));
         });
       }},
  };
}

}  // namespace

std::vector<RefusedMemoryRow> CollectionRows() {
  std::vector<RefusedMemoryRow> rows = {
      {{"KEST::SPlex::Create(KEST::SPlex*&, unsigned int, unsigned int)"},
       "there there",
       {"null null"},
       [](Attempts& attempts) {
         attempts([] {
           SPlex* head = nullptr;
           SPlex* const made = SPlex::Create(head, 3, 8);
           const std::string said = Said(made, head);
           if (head != nullptr) head->FreeDataChain();
           return said;
         });
       }},

      {{"KEST::TPtrArray::SetSize(int, int)"},
       "[1 2 3 0 0 ]",
       {"[1 2 3 ]"},
       OnArray([](TPtrArray& array) { array.SetSize(5); })},
      {{"KEST::TPtrArray::SetSize(int, int)"},
       "[0 0 ]",
       {"[]"},
       [](Attempts& attempts) {
         TPtrArray array;
         attempts([&] { array.RemoveAll(); },
                  [&] {
                    array.SetSize(2);
                    return Contents(array);
                  });
       }},
      {{"KEST::TPtrArray::FreeExtra()"},
       "2 2",
       {"2 3"},
       [](Attempts& attempts) {
         TPtrArray array;
         attempts(
             [&] {
               Fill(array);
               array.RemoveAt(0);
             },
             [&] {
               array.FreeExtra();
               return Said(array.GetSize(), array.GetMaxSize());
             });
       }},
      {{"KEST::TPtrArray::SetAtGrow(int, void*)"},
       "[1 2 3 0 9 ]",
       {"[1 2 3 ]"},
       OnArray([](TPtrArray& array) { array.SetAtGrow(4, Element(9)); })},
      {{"KEST::TPtrArray::InsertAt(int, void*, int)"},
       "[1 9 9 2 3 ]",
       {"[1 2 3 ]"},
       OnArray([](TPtrArray& array) { array.InsertAt(1, Element(9), 2); })},
      {{"KEST::TPtrArray::InsertAt(int, KEST::TPtrArray*)"},
       "[1 1 2 3 2 3 ]",
       {"[1 2 3 ]"},
       OnArray([](TPtrArray& array) { array.InsertAt(1, &array); })},
      {{"KEST::TPtrArray::Append(KEST::TPtrArray const&)"},
       "[1 2 3 1 2 3 ]",
       {"[1 2 3 ]"},
       OnArray([](TPtrArray& array) { array.Append(array); })},
      {{"KEST::TPtrArray::Copy(KEST::TPtrArray const&)"},
       "[1 2 3 ]",
       {"[]"},
       [](Attempts& attempts) {
         TPtrArray array, source;
         Fill(source);
         attempts([&] { array.RemoveAll(); },
                  [&] {
                    array.Copy(source);
                    return Contents(array);
                  });
       }},
      {{"inline TPtrArray::Add(void*)"},
       "3 [1 2 3 9 ]",
       {"-1 [1 2 3 ]"},
       [](Attempts& attempts) {
         TPtrArray array;
         attempts([&] { Fill(array); },
                  [&] {
                    const int index = array.Add(Element(9));
                    return std::to_string(index) + " " + Contents(array);
                  });
       }},

      {{"KEST::TPtrList::AddHead(void*)",
        "KEST::TPtrList::NewNode(KEST::TPtrList::SNode*, KEST::TPtrList::SNode*)"},
       "[9 1 2 3 ]",
       {"[1 2 3 ]"},
       OnList([](TPtrList& list) { list.AddHead(Element(9)); })},
      {{"KEST::TPtrList::AddTail(void*)"}, "[1 2 3 9 ]", {"[1 2 3 ]"}, OnList([](TPtrList& list) {
         list.AddTail(Element(9));
       })},
      {{"KEST::TPtrList::AddHead(KEST::TPtrList const&)"},
       "[1 2 3 1 2 3 ]",
       {"[1 2 3 ]"},
       OnList([](TPtrList& list) { list.AddHead(list); })},
      {{"KEST::TPtrList::AddTail(KEST::TPtrList const&)"},
       "[1 2 3 1 2 3 ]",
       {"[1 2 3 ]"},
       OnList([](TPtrList& list) { list.AddTail(list); })},
      {{"KEST::TPtrList::InsertBefore(KEST::__POSITION*, void*)"},
       "[1 9 2 3 ]",
       {"[1 2 3 ]"},
       OnList([](TPtrList& list) { list.InsertBefore(list.FindIndex(1), Element(9)); })},
      {{"KEST::TPtrList::InsertAfter(KEST::__POSITION*, void*)"},
       "[1 2 9 3 ]",
       {"[1 2 3 ]"},
       OnList([](TPtrList& list) { list.InsertAfter(list.FindIndex(1), Element(9)); })},

      {{"KEST::TPtrFromBstrMap::GetNextAssoc(KEST::__POSITION*&, KEST::TBstr&, void*&) const"},
       "5 7 null",
       {" 7 null"},
       [](Attempts& attempts) {
         TPtrFromBstrMap map;
         map.SetAt(KEST_TEXT("5"), Element(7));
         attempts([&] {
           __POSITION* at = map.GetStartPosition();
           TBstr key;
           void* value = nullptr;
           map.GetNextAssoc(at, key, value);
           return Said(key, Number(value), at);
         });
       }},

      {{"KEST::TFifoBuffer::Write(unsigned char const*, int)"},
       "3 3 abc",
       {"0 0 "},
       [](Attempts& attempts) {
         TFifoBuffer fifo;
         unsigned char out[4];
         attempts([&] { fifo.Read(out, 3); },
                  [&] {
                    const int written =
                        fifo.Write(reinterpret_cast<const unsigned char*>("abc"), 3);
                    const int length = fifo.GetLength();
                    out[fifo.Read(out, 3)] = 0;
                    return Said(written, length, reinterpret_cast<const char*>(out));
                  });
       }},
  };
  for (const auto& more :
       {MapRows<TPtrFromPtrMap>("KEST::TPtrFromPtrMap", "void*"),
        MapRows<TPtrFromBstrMap>("KEST::TPtrFromBstrMap", "unsigned short const*"),
        MapRows<TPtrFromGuidMap>("KEST::TPtrFromGuidMap", "KEST::_GUID const&")}) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  return rows;
}

}  // namespace kest_test
