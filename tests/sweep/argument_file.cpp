// kest/file.h at the edges of its arguments.

#include "file/temp_tree.h"
#include "sweep/argument_sweep.h"

namespace kest_test {

namespace {

using namespace KEST;
using Block = GuardedBlock<unsigned char>;

constexpr int kCount = 5;
const char kContent[] = "12345";

// More data than this is no edge but work.
constexpr int kMuchData = 1000;

// One for all calls.
const TempTree& Tree() {
  static const TempTree tree;
  return tree;
}

// Removed first: file systems wait for the disk when a file is emptied and written anew.
TBstr NewFile() {
  std::filesystem::remove(Tree().Path("file"));
  Tree().MakeFile("file", kContent);
  return Tree().Spec("file");
}

// A file of five bytes, open for reading and writing, as an object and as a handle of the platform
// layer.
struct OpenFile {
  TFile file;
  void* handle;

  OpenFile() {
    const TBstr spec = NewFile();
    EXPECT_TRUE(file.Open(spec, TFile::kOpenReadWrite, false));
    handle = TFile::FileOpen(spec, TFile::kOpenReadWrite, false);
    EXPECT_NE(nullptr, handle);
  }
  ~OpenFile() {
    EXPECT_TRUE(TFile::FileClose(handle));
    EXPECT_TRUE(file.Close());
  }
};

template <typename Work>
void ExpectReads(bool given, int count, Work work) {
  // A buffer of count bytes has to be there, whatever the file holds.
  if (count > kMuchData) return LeaveOut();
  OpenFile open;
  const int read = given ? std::clamp(count, 0, kCount) : 0;
  const Block buffer(count);
  EXPECT_EQ(read, work(open, given ? buffer.Get() : nullptr));
  EXPECT_EQ(std::string(kContent, static_cast<size_t>(read)),
            std::string(buffer.Get(), buffer.Get() + read));
}

template <typename Work>
void ExpectWrites(bool given, int count, Work work) {
  // It writes all of count bytes.
  if (count > kMuchData) return LeaveOut();
  OpenFile open;
  const Block buffer(std::vector<unsigned char>(static_cast<size_t>(std::max(count, 0)), 'x'));
  const int written = given ? std::max(count, 0) : 0;
  EXPECT_EQ(written, work(open, given ? buffer.Get() : nullptr));
  EXPECT_TRUE(open.file.Flush());
  EXPECT_TRUE(TFile::FileFlush(open.handle));
  std::string expected = kContent;
  expected.replace(0, static_cast<size_t>(written), static_cast<size_t>(written), 'x');
  EXPECT_EQ(expected, Tree().Content("file"));
}

// Offsets are cut to their low 32 bits.
long long Cut(long long offset) { return static_cast<int>(offset); }

template <typename Work, typename Position>
void ExpectMoves(long long offset, int origin, Work work, Position position) {
  OpenFile open;
  const long long from = origin == 2 ? kCount : 0;
  const long long to = from + Cut(offset);
  // Positions above the largest number of 32 bits are no edge of this call but of the system's.
  if (to > INT_MAX) return LeaveOut();
  const bool moves = origin >= 0 && origin <= 2 && to >= 0;
  EXPECT_EQ(moves, work(open));
  EXPECT_EQ(moves ? to : 0, position(open));
}

template <typename Work>
void ExpectResizes(long long length, Work work) {
  OpenFile open;
  const bool fits = Cut(length) >= 0;
  EXPECT_EQ(fits, work(open));
  EXPECT_EQ(fits ? Cut(length) : kCount, open.file.GetLength());
  EXPECT_EQ(fits ? Cut(length) : kCount, TFile::FileGetLength(open.handle));
}

// What opening a file that is there gives, and what it leaves of the content.
template <typename Work>
void ExpectOpens(bool expected, bool emptied, Work work) {
  EXPECT_EQ(expected, work(NewFile()));
  EXPECT_EQ(emptied ? "" : kContent, Tree().Content("file"));
}

void AddFileRows(Table& table) {
  table.Pairs("KEST::TFileInfo::Init(KEST::TBstr const&, bool, long long, long, long, long)",
              Honest(0, 5, 1, 2, 3),
              [](bool isDirectory, long long size, long created, long written, long read) {
                TFileInfo info;
                info.Init(Bstr("name"), isDirectory, size, created, written, read);
                EXPECT_EQ("name", Text(info.name));
                EXPECT_EQ(isDirectory, info.isDirectory);
                EXPECT_EQ(size, info.size);
                EXPECT_EQ(created, info.creationTime);
                EXPECT_EQ(written, info.lastWriteTime);
                EXPECT_EQ(read, info.lastAccessTime);
              });
  table.Row("KEST::TFile::Open(KEST::TBstr const&, unsigned int, bool)",
            Around(TFile::kOpenReadWrite), [](unsigned int flags, bool create) {
              const bool writes = (flags & TFile::kOpenReadWrite) != 0;
              ExpectOpens(writes || !create, writes && create, [=](const TBstr& spec) {
                TFile file;
                const bool opened = file.Open(spec, flags, create);
                EXPECT_EQ(opened, file.Close());
                return opened;
              });
            });
  table.Row("KEST::TFile::FileOpen(KEST::TBstr const&, unsigned int, bool)",
            Around(TFile::kOpenReadWrite), [](unsigned int flags, bool create) {
              ExpectOpens(true, create, [=](const TBstr& spec) {
                void* handle = TFile::FileOpen(spec, flags, create);
                return handle != nullptr && TFile::FileClose(handle);
              });
            });
  table.Row("KEST::TFile::Read(void*, int)", Around(kCount), [](bool given, int count) {
    const Block nothing(0);
    EXPECT_EQ(0, TFile().Read(given ? nothing.Get() : nullptr, count));
    ExpectReads(given, count,
                [=](OpenFile& open, void* buffer) { return open.file.Read(buffer, count); });
  });
  table.Row("KEST::TFile::FileRead(void*, void*, int)", Around(kCount), [](int count) {
    ExpectReads(true, count, [=](OpenFile& open, void* buffer) {
      return TFile::FileRead(open.handle, buffer, count);
    });
  });
  table.Row("KEST::TFile::Write(void const*, int)", Around(kCount), [](bool given, int count) {
    const Block nothing(0);
    EXPECT_EQ(0, TFile().Write(given ? nothing.Get() : nullptr, count));
    ExpectWrites(given, count,
                 [=](OpenFile& open, void* buffer) { return open.file.Write(buffer, count); });
  });
  table.Row("KEST::TFile::FileWrite(void*, void const*, int)", Around(kCount), [](int count) {
    ExpectWrites(true, count, [=](OpenFile& open, void* buffer) {
      return TFile::FileWrite(open.handle, buffer, count);
    });
  });
  table.Row("KEST::TFile::SetPosition(long long, int)", Around(2, kCount),
            [](long long offset, int origin) {
              EXPECT_FALSE(TFile().SetPosition(offset, origin));
              ExpectMoves(
                  offset, origin,
                  [=](OpenFile& open) { return open.file.SetPosition(offset, origin); },
                  [](OpenFile& open) { return open.file.GetPosition(); });
            });
  table.Row(
      "KEST::TFile::FileSetPosition(void*, long long, int)", Around(2, kCount),
      [](long long offset, int origin) {
        ExpectMoves(
            offset, origin,
            [=](OpenFile& open) { return TFile::FileSetPosition(open.handle, offset, origin); },
            [](OpenFile& open) { return TFile::FileGetPosition(open.handle); });
      });
  table.Row("KEST::TFile::SetLength(long long)", Around(kCount), [](long long length) {
    EXPECT_FALSE(TFile().SetLength(length));
    ExpectResizes(length, [=](OpenFile& open) { return open.file.SetLength(length); });
  });
  table.Row("KEST::TFile::FileSetLength(void*, long long)", Around(kCount), [](long long length) {
    ExpectResizes(length,
                  [=](OpenFile& open) { return TFile::FileSetLength(open.handle, length); });
  });
  table.Row("KEST::TFile::MakeValidSpec(KEST::TBstr const&, bool)",
            [](bool flag) { EXPECT_EQ("a/b", Text(TFile::MakeValidSpec(Bstr("a/b"), flag))); });
  table.Row("KEST::TFile::SetLastWriteTime(KEST::TBstr const&, long)", [](long time) {
    const TBstr spec = NewFile();
    // What lies outside of the file system's own times is its affair.
    const bool done = TFile::SetLastWriteTime(spec, time);
    TFileInfo info;
    EXPECT_TRUE(TFile::GetInfo(spec, info));
    if (time >= 0 && time <= INT_MAX) {
      EXPECT_TRUE(done);
      EXPECT_EQ(time, info.lastWriteTime);
    }
  });
  table.Row("KEST::TFileFinder::Find(unsigned short const*, bool)", [](bool given, bool recursive) {
    TempTree tree;
    tree.MakeFolder("folder");
    tree.MakeFile("folder/file", kContent);
    const WorkingDirectory directory(tree.Path());
    TFileFinder finder;
    // Null stands for "*".
    EXPECT_TRUE(finder.Find(given ? KEST_TEXT("*") : nullptr, recursive));
    EXPECT_EQ("folder", Text(finder.name));
    EXPECT_EQ(recursive, finder.FindNext(false));
    EXPECT_FALSE(finder.FindNext(false));
  });
  table.Row("KEST::TFileFinder::FindNext(bool)", [](bool skipSubdirectory, bool found) {
    TempTree tree;
    tree.MakeFolder("folder");
    tree.MakeFile("folder/file", kContent);
    TFileFinder finder;
    if (found) {
      EXPECT_TRUE(finder.Find(tree.Spec("*").GetString(), true));
    }
    EXPECT_EQ(found && !skipSubdirectory, finder.FindNext(skipSubdirectory));
  });
  table.Row("KEST::TFileFinder::ComparePattern(unsigned short const*, unsigned short const*)",
            [](bool name, bool pattern) {
              EXPECT_EQ('a' * name - 'a' * pattern,
                        TFileFinder::ComparePattern(name ? KEST_TEXT("abc") : nullptr,
                                                    pattern ? KEST_TEXT("abc") : nullptr));
            });
  table.Row("KEST::TFileFinder::FileFinderClose(void*)", [](bool given) {
    TFileInfo info;
    void* handle = given ? TFileFinder::FileFinderFind(Bstr("/*"), info) : nullptr;
    EXPECT_EQ(given, handle != nullptr);
    TFileFinder::FileFinderClose(handle);
  });
}

const Table kFile(AddFileRows);

TEST(ArgumentSweep, File) { kFile.Run(); }

}  // namespace

}  // namespace kest_test
