// The pointer containers and the byte queue, beside the containers of other libraries and of
// libstdc++.

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <deque>
#include <list>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "kest/collections.h"
#include "kest/string.h"
#include "support/row.h"

#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_QT
#include <QHash>
#include <QString>
#include <QVector>
#endif
#if KEST_PEER_APR
#include <apr_buckets.h>
#include <apr_general.h>
#include <apr_hash.h>
#include <apr_ring.h>
#include <apr_tables.h>
#endif
#if KEST_PEER_BOOST
#include <boost/unordered_map.hpp>
#endif

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;

void* Pointer(uintptr_t number) { return reinterpret_cast<void*>(number); }

#if KEST_PEER_APR
// For the length of one benchmark.
class TPool {
 public:
  TPool() {
    apr_initialize();
    apr_pool_create(&m_pool, nullptr);
  }
  ~TPool() {
    apr_pool_destroy(m_pool);
    apr_terminate();
  }
  TPool(const TPool&) = delete;
  TPool& operator=(const TPool&) = delete;
  operator apr_pool_t*() const { return m_pool; }
  void Clear() { apr_pool_clear(m_pool); }

 private:
  apr_pool_t* m_pool;
};
#endif

// Arrays: count pointers appended to an empty array, which is then destroyed.

void RegisterAppend(uintptr_t count) {
  const std::string row = "array append " + std::to_string(count);
  Row(row, "kest", [count](benchmark::State& state) {
    for (auto _ : state) {
      KEST::TPtrArray array;
      for (uintptr_t i = 0; i < count; ++i) array.Add(Pointer(i));
      DoNotOptimize(array.GetData());
      ClobberMemory();
    }
  });
  Row(row, "libstdc++", [count](benchmark::State& state) {
    for (auto _ : state) {
      std::vector<void*> array;
      for (uintptr_t i = 0; i < count; ++i) array.push_back(Pointer(i));
      DoNotOptimize(array.data());
      ClobberMemory();
    }
  });
#if KEST_PEER_GLIB
  Row(row, "glib", [count](benchmark::State& state) {
    for (auto _ : state) {
      GPtrArray* array = g_ptr_array_new();
      for (uintptr_t i = 0; i < count; ++i) g_ptr_array_add(array, Pointer(i));
      DoNotOptimize(array->pdata);
      ClobberMemory();
      g_ptr_array_free(array, TRUE);
    }
  });
#endif
#if KEST_PEER_QT
  Row(row, "qt", [count](benchmark::State& state) {
    for (auto _ : state) {
      QVector<void*> array;
      for (uintptr_t i = 0; i < count; ++i) array.append(Pointer(i));
      DoNotOptimize(array.constData());
      ClobberMemory();
    }
  });
#endif
#if KEST_PEER_APR
  Row(row, "apr", [count](benchmark::State& state) {
    TPool pool;
    for (auto _ : state) {
      apr_array_header_t* array = apr_array_make(pool, 0, sizeof(void*));
      for (uintptr_t i = 0; i < count; ++i) APR_ARRAY_PUSH(array, void*) = Pointer(i);
      DoNotOptimize(array->elts);
      ClobberMemory();
      pool.Clear();
    }
  });
#endif
}

// Queues: one type for each library, with Push at one end and Pop at the other.

struct SKestList {
  static constexpr const char* kName = "kest";
  KEST::TPtrList list;
  void Push(void* element) { list.AddTail(element); }
  void* Pop() { return list.RemoveHead(); }
};

struct SStdList {
  static constexpr const char* kName = "libstdc++";
  std::list<void*> list;
  void Push(void* element) { list.push_back(element); }
  void* Pop() {
    void* element = list.front();
    list.pop_front();
    return element;
  }
};

#if KEST_PEER_GLIB
struct SGlibList {
  static constexpr const char* kName = "glib";
  GQueue list = G_QUEUE_INIT;
  ~SGlibList() { g_queue_clear(&list); }
  void Push(void* element) { g_queue_push_tail(&list, element); }
  void* Pop() { return g_queue_pop_head(&list); }
};
#endif

#if KEST_PEER_APR
// A ring is links alone; each node is an allocation of its own.
struct SAprRing {
  static constexpr const char* kName = "apr";
  struct SNode {
    APR_RING_ENTRY(SNode) link;
    void* data;
  };
  APR_RING_HEAD(SHead, SNode) list;

  SAprRing() { APR_RING_INIT(&list, SNode, link); }
  ~SAprRing() {
    while (!APR_RING_EMPTY(&list, SNode, link)) Pop();
  }
  void Push(void* element) {
    SNode* node = static_cast<SNode*>(malloc(sizeof(SNode)));
    node->data = element;
    APR_RING_INSERT_TAIL(&list, node, SNode, link);
  }
  void* Pop() {
    SNode* node = APR_RING_FIRST(&list);
    void* element = node->data;
    APR_RING_REMOVE(node, link);
    free(node);
    return element;
  }
};
#endif

// All count elements in, and all out again.
template <typename TList>
void RegisterInAndOut(const std::string& row, uintptr_t count) {
  Row(row, TList::kName, [count](benchmark::State& state) {
    TList list;
    for (auto _ : state) {
      for (uintptr_t i = 0; i < count; ++i) list.Push(Pointer(i));
      for (uintptr_t i = 0; i < count; ++i) DoNotOptimize(list.Pop());
    }
  });
}

// One in and one out, behind a backlog that stays.
template <typename TList>
void RegisterSteady(const std::string& row, uintptr_t backlog) {
  Row(row, TList::kName, [backlog](benchmark::State& state) {
    TList list;
    for (uintptr_t i = 0; i < backlog; ++i) list.Push(Pointer(i));
    for (auto _ : state) {
      list.Push(Pointer(1));
      DoNotOptimize(list.Pop());
    }
  });
}

template <typename TList>
void RegisterList() {
  RegisterInAndOut<TList>("list in and out 1000", 1000);
  RegisterSteady<TList>("list steady", 100);
  RegisterSteady<TList>("list on empty", 0);
}

// Maps: one type for each library and kind of key, made for a number of keys to come.

// Addresses of blocks of 48 bytes, in no order.
std::vector<void*> PointerKeys(size_t count) {
  std::vector<void*> keys(count);
  for (size_t i = 0; i < count; ++i) keys[i] = Pointer(0x58000010 + i * 48);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(4301));
  return keys;
}

// A number of buckets for that many keys, as a client of a library that takes one would choose it.
constexpr unsigned int PrimeFrom(unsigned int count) { return count <= 1000 ? 1009 : 100003; }

struct SKestPointerMap {
  static constexpr const char* kName = "kest";
  KEST::TPtrFromPtrMap map;
  explicit SKestPointerMap(size_t count) {
    map.InitHashTable(PrimeFrom(static_cast<unsigned int>(count)));
  }
  void Insert(void* key, void* value) { map.SetAt(key, value); }
  void* Find(void* key) const {
    void* value = nullptr;
    map.Lookup(key, value);
    return value;
  }
  void Remove(void* key) { map.RemoveKey(key); }
};

// The maps that are like std::unordered_map.
template <typename TMap, const char* const& kTheirName>
struct SUnorderedMap {
  static constexpr const char* kName = kTheirName;
  TMap map;
  explicit SUnorderedMap(size_t count) { map.reserve(count); }
  template <typename TKey>
  void Insert(const TKey& key, void* value) {
    map[key] = value;
  }
  template <typename TKey>
  void* Find(const TKey& key) const {
    const auto found = map.find(key);
    return found != map.end() ? found->second : nullptr;
  }
  template <typename TKey>
  void Remove(const TKey& key) {
    map.erase(key);
  }
};

constexpr const char* kLibstdcxx = "libstdc++";
using SStdPointerMap = SUnorderedMap<std::unordered_map<void*, void*>, kLibstdcxx>;
#if KEST_PEER_BOOST
constexpr const char* kBoost = "boost";
using SBoostPointerMap = SUnorderedMap<boost::unordered_map<void*, void*>, kBoost>;
#endif

#if KEST_PEER_GLIB
template <typename TKey, GHashFunc kHash, GEqualFunc kEqual>
struct SGlibMap {
  static constexpr const char* kName = "glib";
  GHashTable* map = g_hash_table_new(kHash, kEqual);
  explicit SGlibMap(size_t) {}
  ~SGlibMap() { g_hash_table_destroy(map); }
  SGlibMap(const SGlibMap&) = delete;
  SGlibMap& operator=(const SGlibMap&) = delete;
  void Insert(TKey* key, void* value) { g_hash_table_insert(map, key, value); }
  void* Find(TKey* key) const { return g_hash_table_lookup(map, key); }
  void Remove(TKey* key) { g_hash_table_remove(map, key); }
};
using SGlibPointerMap = SGlibMap<void, g_direct_hash, nullptr>;
#endif

#if KEST_PEER_QT
template <typename TKey>
struct SQtMap {
  static constexpr const char* kName = "qt";
  QHash<TKey, void*> map;
  explicit SQtMap(size_t count) { map.reserve(static_cast<int>(count)); }
  void Insert(const TKey& key, void* value) { map.insert(key, value); }
  void* Find(const TKey& key) const { return map.value(key); }
  void Remove(const TKey& key) { map.remove(key); }
};
using SQtPointerMap = SQtMap<void*>;
#endif

#if KEST_PEER_APR
struct SAprPointerMap {
  static constexpr const char* kName = "apr";
  TPool pool;
  apr_hash_t* map = apr_hash_make(pool);
  explicit SAprPointerMap(size_t) {}
  // The key is referred to, not copied.
  void Insert(void* const& key, void* value) { apr_hash_set(map, &key, sizeof(key), value); }
  void* Find(void* const& key) const { return apr_hash_get(map, &key, sizeof(key)); }
  void Remove(void* const& key) { apr_hash_set(map, &key, sizeof(key), nullptr); }
};
#endif

// One key at a time, all of them there.
template <typename TMap, typename TKey>
void RegisterHit(const std::string& row, const std::vector<TKey>& keys) {
  Row(row, TMap::kName, [keys](benchmark::State& state) {
    TMap map(keys.size());
    for (const TKey& key : keys) map.Insert(key, Pointer(1));
    for (auto _ : state) {
      for (const TKey& key : keys) DoNotOptimize(map.Find(key));
    }
  });
}

// A map made, all keys inserted and removed one by one.
template <typename TMap, typename TKey>
void RegisterInsertAndRemove(const std::string& row, const std::vector<TKey>& keys) {
  Row(row, TMap::kName, [keys](benchmark::State& state) {
    for (auto _ : state) {
      TMap map(keys.size());
      for (const TKey& key : keys) map.Insert(key, Pointer(1));
      for (const TKey& key : keys) map.Remove(key);
      ClobberMemory();
    }
  });
}

template <typename TMap>
void RegisterPointerMap() {
  RegisterHit<TMap>("pointer map hit", PointerKeys(1000));
  RegisterInsertAndRemove<TMap>("pointer map insert and remove 1000", PointerKeys(1000));
  RegisterInsertAndRemove<TMap>("pointer map insert and remove 100000", PointerKeys(100000));
}

// Texts of 21 units that begin alike, as names of settings do.
std::vector<std::string> TextKeys() {
  std::vector<std::string> keys;
  for (int i = 0; i < 1000; ++i) keys.push_back("settings.window." + std::to_string(10000 + i));
  std::shuffle(keys.begin(), keys.end(), std::mt19937(4302));
  return keys;
}

// The same texts in the form that a library takes.
template <typename TKey, typename Convert>
std::vector<TKey> TextKeysAs(Convert convert) {
  std::vector<TKey> keys;
  for (const std::string& key : TextKeys()) keys.push_back(convert(key));
  return keys;
}

struct SKestTextMap {
  static constexpr const char* kName = "kest";
  KEST::TPtrFromBstrMap map;
  explicit SKestTextMap(size_t count) {
    map.InitHashTable(PrimeFrom(static_cast<unsigned int>(count)));
  }
  void Insert(const KEST::TBstr& key, void* value) { map.SetAt(key.GetString(), value); }
  void* Find(const KEST::TBstr& key) const {
    void* value = nullptr;
    map.Lookup(key.GetString(), value);
    return value;
  }
  void Remove(const KEST::TBstr& key) { map.RemoveKey(key.GetString()); }
};
using SStdTextMap = SUnorderedMap<std::unordered_map<std::u16string, void*>, kLibstdcxx>;
#if KEST_PEER_BOOST
using SBoostTextMap = SUnorderedMap<boost::unordered_map<std::u16string, void*>, kBoost>;
#endif
#if KEST_PEER_GLIB
struct SGlibTextMap : SGlibMap<char, g_str_hash, g_str_equal> {
  using SGlibMap::SGlibMap;
  void Insert(const std::string& key, void* value) {
    g_hash_table_insert(map, const_cast<char*>(key.c_str()), value);
  }
  void* Find(const std::string& key) const { return g_hash_table_lookup(map, key.c_str()); }
  void Remove(const std::string& key) { g_hash_table_remove(map, key.c_str()); }
};
#endif

template <typename TMap, typename TKey>
void RegisterTextMap(const std::vector<TKey>& keys) {
  RegisterHit<TMap>("text map hit", keys);
}

void RegisterTextMaps() {
  RegisterTextMap<SKestTextMap>(TextKeysAs<KEST::TBstr>([](const std::string& key) {
    return KEST::TBstr(key.c_str(), static_cast<int>(key.size()));
  }));
  const auto wide = TextKeysAs<std::u16string>(
      [](const std::string& key) { return std::u16string(key.begin(), key.end()); });
  RegisterTextMap<SStdTextMap>(wide);
#if KEST_PEER_BOOST
  RegisterTextMap<SBoostTextMap>(wide);
#endif
#if KEST_PEER_GLIB
  RegisterTextMap<SGlibTextMap>(TextKeys());
#endif
#if KEST_PEER_QT
  RegisterTextMap<SQtMap<QString>>(
      TextKeysAs<QString>([](const std::string& key) { return QString::fromLatin1(key.data()); }));
#endif
}

// Byte queues: 64 bytes in and out of an empty one.

constexpr int kPiece = 64;

struct SKestBytes {
  static constexpr const char* kName = "kest";
  KEST::TFifoBuffer queue;
  void Write(const unsigned char* bytes) { queue.Write(bytes, kPiece); }
  void Read(unsigned char* bytes) { queue.Read(bytes, kPiece); }
};

struct SStdBytes {
  static constexpr const char* kName = "libstdc++";
  std::deque<unsigned char> queue;
  void Write(const unsigned char* bytes) { queue.insert(queue.end(), bytes, bytes + kPiece); }
  void Read(unsigned char* bytes) {
    std::copy_n(queue.begin(), kPiece, bytes);
    queue.erase(queue.begin(), queue.begin() + kPiece);
  }
};

#if KEST_PEER_GLIB
struct SGlibBytes {
  static constexpr const char* kName = "glib";
  GByteArray* queue = g_byte_array_new();
  SGlibBytes() = default;
  ~SGlibBytes() { g_byte_array_free(queue, TRUE); }
  SGlibBytes(const SGlibBytes&) = delete;
  SGlibBytes& operator=(const SGlibBytes&) = delete;
  void Write(const unsigned char* bytes) { g_byte_array_append(queue, bytes, kPiece); }
  void Read(unsigned char* bytes) {
    memcpy(bytes, queue->data, kPiece);
    g_byte_array_remove_range(queue, 0, kPiece);
  }
};
#endif

#if KEST_PEER_QT
struct SQtBytes {
  static constexpr const char* kName = "qt";
  QByteArray queue;
  void Write(const unsigned char* bytes) {
    queue.append(reinterpret_cast<const char*>(bytes), kPiece);
  }
  void Read(unsigned char* bytes) {
    memcpy(bytes, queue.constData(), kPiece);
    queue.remove(0, kPiece);
  }
};
#endif

#if KEST_PEER_APR
struct SAprBytes {
  static constexpr const char* kName = "apr";
  TPool pool;
  apr_bucket_alloc_t* buckets = apr_bucket_alloc_create(pool);
  apr_bucket_brigade* queue = apr_brigade_create(pool, buckets);
  void Write(const unsigned char* bytes) {
    apr_brigade_write(queue, nullptr, nullptr, reinterpret_cast<const char*>(bytes), kPiece);
  }
  void Read(unsigned char* bytes) {
    apr_size_t length = kPiece;
    apr_brigade_flatten(queue, reinterpret_cast<char*>(bytes), &length);
    apr_brigade_cleanup(queue);
  }
};
#endif

template <typename TBytes>
void RegisterBytes() {
  Row("bytes 64 in and out", TBytes::kName, [](benchmark::State& state) {
    TBytes queue;
    unsigned char in[kPiece] = {1, 2, 3};
    unsigned char out[kPiece];
    for (auto _ : state) {
      DoNotOptimize(in);
      queue.Write(in);
      queue.Read(out);
      DoNotOptimize(out);
    }
  });
}

}  // namespace

void RegisterRows() {
  for (uintptr_t count : {1000, 1000000}) RegisterAppend(count);

  RegisterList<SKestList>();
  RegisterList<SStdList>();
#if KEST_PEER_GLIB
  RegisterList<SGlibList>();
#endif
#if KEST_PEER_APR
  RegisterList<SAprRing>();
#endif

  RegisterPointerMap<SKestPointerMap>();
  RegisterPointerMap<SStdPointerMap>();
#if KEST_PEER_BOOST
  RegisterPointerMap<SBoostPointerMap>();
#endif
#if KEST_PEER_GLIB
  RegisterPointerMap<SGlibPointerMap>();
#endif
#if KEST_PEER_QT
  RegisterPointerMap<SQtPointerMap>();
#endif
#if KEST_PEER_APR
  RegisterPointerMap<SAprPointerMap>();
#endif

  RegisterTextMaps();

  RegisterBytes<SKestBytes>();
  RegisterBytes<SStdBytes>();
#if KEST_PEER_GLIB
  RegisterBytes<SGlibBytes>();
#endif
#if KEST_PEER_QT
  RegisterBytes<SQtBytes>();
#endif
#if KEST_PEER_APR
  RegisterBytes<SAprBytes>();
#endif
}
