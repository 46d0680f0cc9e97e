// What has to be given back, given back by a destructor: the library's start, a thread's use of it,
// BSTRs, and modules.
//
//   Failure    Nothing throws; each object says whether it holds something.
//   Threads    The library counts its users without a lock. The sessions here take turns, so that
//              threads may come and go as they like; a module that is built with hidden symbols has
//              a lock of its own, and then the program's and the module's sessions may not begin or
//              end at the same time.
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_SESSION_H
#define KEST_BRIDGE_SESSION_H

#include <memory>
#include <mutex>
#include <new>
#include <type_traits>
#include <utility>

#include "kest/file.h"
#include "kest/frame.h"
#include "kest/string.h"

namespace KEST {

namespace bridge_detail {

// Needs neither a constructor nor a destructor to run, so threads may outlive static objects.
inline std::mutex sessionTurn;

}  // namespace bridge_detail

// The library's start and stop. The program's first one starts the library and its last one stops
// it, both on one thread; more of them, in a plug-in say, are counted.
//
//   int main() {
//     KEST::TSession session;
//     if (!session) return 1;
//     ...
class TSession {
 public:
  // allocator is what KestInitialize takes: hooks, or null for malloc, realloc and free.
  explicit TSession(SAllocator* allocator = nullptr) {
    std::lock_guard<std::mutex> turn(bridge_detail::sessionTurn);
    started = KestInitialize(allocator) != 0;
  }
  ~TSession() {
    if (!started) return;
    std::lock_guard<std::mutex> turn(bridge_detail::sessionTurn);
    KestUninitialize();
  }
  TSession(const TSession&) = delete;
  TSession& operator=(const TSession&) = delete;

  // Whether the library runs for this session.
  explicit operator bool() const { return started; }

 private:
  bool started;
};

// A further thread's use of the library, from its first call to its last: a local object of the
// thread's function. Its end frees the thread's data under the KestTls... calls. The program's
// TSession, made before and destroyed afterwards, keeps the library running; then nothing here can
// fail.
class TThreadSession : public TSession {
 public:
  TThreadSession() = default;
};

// The one owner of a BSTR; null is the empty text. Moved, never copied. Units are 16-bit.
class TBstrOwner {
 public:
  // Owns nothing, or bstr, which came from the library.
  TBstrOwner() noexcept : bstr(nullptr) {}
  explicit TBstrOwner(unsigned short* ownBstr) noexcept : bstr(ownBstr) {}
  // Takes the text out of a TBstr, which is empty afterwards. Nothing is copied.
  explicit TBstrOwner(TBstr&& text) noexcept : bstr(text.Detach()) {}
  TBstrOwner(TBstrOwner&& other) noexcept : bstr(other.Release()) {}
  TBstrOwner& operator=(TBstrOwner&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  TBstrOwner(const TBstrOwner&) = delete;
  TBstrOwner& operator=(const TBstrOwner&) = delete;
  ~TBstrOwner() { KestFreeString(bstr); }

  // The BSTR, which stays this object's; null when there is none.
  const unsigned short* Get() const { return bstr; }
  unsigned short* Get() { return bstr; }
  // Units, the terminator not counted.
  unsigned int GetLength() const { return KestStringLen(bstr); }
  explicit operator bool() const { return bstr != nullptr; }

  // Frees what is there and owns newBstr instead.
  void Reset(unsigned short* newBstr = nullptr) {
    if (newBstr == bstr) return;
    KestFreeString(bstr);
    bstr = newBstr;
  }
  // Gives the BSTR to the caller, who frees it with KestFreeString.
  unsigned short* Release() { return std::exchange(bstr, nullptr); }
  // An output parameter: frees what is there and gives the place where a callee may store a BSTR.
  unsigned short** GetAddress() {
    Reset();
    return &bstr;
  }
  // Moves the text into a TBstr. Nothing is copied.
  TBstr ToBstr() && {
    TBstr text;
    text.Attach(Release());
    return text;
  }

 private:
  unsigned short* bstr;
};

// A loaded module, stopped and unloaded by the destructor. Moved, never copied. What came from it
// (functions, text, threads that run in it) has to be let go before.
class TModule {
 public:
  // None.
  TModule() = default;
  // Loads and starts the module of that file, as TLibrary::Load does it, from the working directory
  // when the spec is a bare name. None when that fails.
  explicit TModule(const TBstr& spec) : library(new (std::nothrow) TLibrary) {
    if (library != nullptr && !library->Load(spec)) library.reset();
  }

  explicit operator bool() const { return library != nullptr; }

  // The function or variable that the module exports under name: Find<int(int)>("Twice") is an
  // int (*)(int), Find<int>("count") an int*. Null when there is none. The type is taken on trust.
  template <typename T>
  T* Find(const TBstr& name) const {
    void* const address = library != nullptr ? library->GetProcAddress(name) : nullptr;
    if constexpr (std::is_function_v<T>) {
      return reinterpret_cast<T*>(address);
    } else {
      return static_cast<T*>(address);
    }
  }

  // Stops and unloads the module. False without one, or when the system refuses: then it is still
  // loaded, stopped, and the destructor tries once more.
  bool Free() {
    if (library == nullptr || !library->Free()) return false;
    library.reset();
    return true;
  }

 private:
  std::unique_ptr<TLibrary> library;
};

}  // namespace KEST

#endif  // KEST_BRIDGE_SESSION_H
