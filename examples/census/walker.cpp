#include "walker.h"

#include <new>

#include "kest/bridge/session.h"
#include "names.h"
#include "posix.h"

using KEST::__POSITION;
using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;

namespace census {

namespace {

// The system finds no path of 4096 bytes or more, and the finder passes over what is not found. So
// a folder is listed only while its longest possible name would still be found.
constexpr int kLongestPath = 4095, kLongestName = 255;

// Null without memory.
Entry* NewEntry(const Entry& folder, const TFileFinder& found) {
  Entry* entry = new (std::nothrow) Entry;
  if (entry == nullptr) return nullptr;
  entry->path = TFile::AppendFileNameToSpec(folder.path, found.name);
  entry->kind = found.isDirectory ? kDirectory : kUnknown;  // a worker looks closer
  entry->size = found.size;
  entry->modified = found.lastWriteTime;
  return entry;
}

}  // namespace

Walker::~Walker() {
  while (!pending.IsEmpty()) delete static_cast<Entry*>(pending.RemoveHead());
}

bool Walker::Start(const TBstr& ownRoot, const TBstr& ownPattern, const TBstr& ownHidden,
                   WorkQueue* ownQueue, const SNews& ownNews) {
  root = ownRoot;
  pattern = ownPattern;
  hidden = ownHidden;
  queue = ownQueue;
  news = ownNews;
  Entry* top = new (std::nothrow) Entry;
  if (top == nullptr) return false;
  top->path = TFileFinder::kCurrentDirectory;
  top->kind = kDirectory;
  top->share = 1;
  return AddFolder(top) && thread.Create(ThreadProc, this, false);
}

int Walker::ThreadProc(void* self) {
  KEST::TThreadSession session;
  static_cast<Walker*>(self)->Walk();
  return 0;
}

void Walker::Walk() {
  while (!pending.IsEmpty()) {
    Entry* folder = static_cast<Entry*>(pending.RemoveTail());
    if (!List(folder)) {
      failed = !queue->IsAbandoned();
      delete folder;
      break;
    }
    news.PostEntry(folder);
  }
  queue->Finish();
  news.PostEnded();
}

// False when the census is abandoned or memory runs out. The names of a folder may themselves look
// like patterns, so the finder gets one folder at a time, taken literally, instead of descending by
// itself.
bool Walker::List(Entry* folder) {
  const TBstr spec = SpecOf(root, folder->path);
  if (spec.GetLength() + 1 + kLongestName > kLongestPath) {
    folder->Fail("cannot be listed: its path is too long");
    return true;
  }
  const TBstr literal = TFile::AddTrailingSeparator(GlobLiteral(spec));
  const int everything = pattern.IsEmpty() ? kFolders | kOthers : kFolders;
  const int before = pending.GetCount();
  bool listed = false;
  // "*" leaves out what begins with a dot; ".*" finds those, and "." and ".." with them.
  if (!Search(literal + KEST_TEXT("*"), *folder, everything, &listed)) return false;
  if (!Search(literal + KEST_TEXT(".*"), *folder, everything, &listed)) return false;
  if (!pattern.IsEmpty() && !Search(literal + pattern, *folder, kOthers, &listed)) return false;
  // An unreadable folder looks empty to the finder, but an empty one has at least ".".
  if (!listed) {
    const TBstr why = WhyNotListed(spec);
    if (!why.IsEmpty()) folder->Fail(TBstr("cannot be listed: ") + why);
  }
  DivideShare(folder, pending.GetCount() - before);
  return true;
}

bool Walker::Search(const TBstr& spec, const Entry& folder, int wanted, bool* listed) {
  TFileFinder finder;
  for (bool found = finder.Find(spec.GetString(), false); found; found = finder.FindNext(false)) {
    if (finder.name == TFileFinder::kCurrentDirectory) *listed = true;
    if (finder.name == TFileFinder::kCurrentDirectory ||
        finder.name == TFileFinder::kParentDirectory ||
        (wanted & (finder.isDirectory ? kFolders : kOthers)) == 0) {
      continue;
    }
    Entry* entry = NewEntry(folder, finder);
    if (entry == nullptr) return false;
    if (!(finder.isDirectory ? AddFolder(entry) : AddOther(entry))) return false;
  }
  return !queue->IsAbandoned();
}

bool Walker::AddFolder(Entry* folder) {
  if (SpecOf(root, folder->path) == hidden) {
    folder->Skip("the census's own output");
    news.PostEntry(folder);
    return true;
  }
  if (pending.AddTail(folder) != nullptr) return true;
  delete folder;
  return false;
}

bool Walker::AddOther(Entry* entry) {
  if (queue->Put(entry)) return true;
  delete entry;
  return false;
}

// A folder and each folder below it get the same part of what the folder stands for. The folders
// are the last that were added.
void Walker::DivideShare(Entry* folder, int folders) {
  folder->share /= folders + 1;
  __POSITION* position = pending.GetTailPosition();
  for (int i = 0; i < folders; ++i) {
    static_cast<Entry*>(pending.GetPrev(position))->share = folder->share;
  }
}

}  // namespace census
