#ifndef KEST_FILE_H
#define KEST_FILE_H

#include "kest/collections.h"
#include "kest/string.h"
namespace KEST {
struct KEST_API TFileInfo {
  TBstr name;
  bool isDirectory;
  long long size;
  long creationTime;
  long lastWriteTime;
  long lastAccessTime;
  TFileInfo();
  void Init(const TBstr& name, bool isDirectory, long long size, long creationTime,
            long lastWriteTime, long lastAccessTime);
};
class KEST_API TFile {
 public:
  enum { kOpenReadWrite = 0x2 };
  static const unsigned short kDirectorySeparator;
  static const unsigned short kUnsafeConversions[];
  TFile();
  TFile(const TFile&) = delete;
  TFile& operator=(const TFile&) = delete;
  ~TFile();
  bool Open(const TBstr& spec, unsigned int flags, bool create);
  bool Close();
  bool IsOpen() const;
  int Read(void* buffer, int count);
  int Write(const void* buffer, int count);
  bool Flush();
  long long GetPosition() const;
  bool SetPosition(long long offset, int origin);
  long long GetLength() const;
  bool SetLength(long long length);
  const TBstr& GetFileSpec() const;
  static TBstr AddTrailingSeparator(const TBstr& spec);
  static TBstr RemoveTrailingSeparator(const TBstr& spec);
  static TBstr AppendFileNameToSpec(const TBstr& dirSpec, const TBstr& name);
  static TBstr DirSpecFromFullSpec(const TBstr& spec);
  static TBstr FileNameFromFullSpec(const TBstr& spec);
  static TBstr CanonicalizeSpec(const TBstr& spec);
  static TBstr MakeValidSpec(const TBstr& spec, bool flag);
  static bool SafeToConvert(const TBstr& spec);
  static TBstr GetTempDirectory();
  static TBstr CreateTempFileSpec();
  static bool GetInfo(const TBstr& spec, TFileInfo& info);
  static bool CreateDirectory(const TBstr& spec);
  static bool CreatePath(const TBstr& spec);
  static bool RemoveDirectory(const TBstr& spec);
  static bool Remove(const TBstr& spec);
  static bool Rename(const TBstr& from, const TBstr& to);
  static bool SetLastWriteTime(const TBstr& spec, long time);
  // Platform layer.
  static void* FileOpen(const TBstr& spec, unsigned int flags, bool create);
  static bool FileClose(void* h);
  static int FileRead(void* h, void* buffer, int count);
  static int FileWrite(void* h, const void* buffer, int count);
  static bool FileFlush(void* h);
  static long long FileGetPosition(void* h);
  static bool FileSetPosition(void* h, long long offset, int origin);
  static long long FileGetLength(void* h);
  static bool FileSetLength(void* h, long long length);

 private:
  void* handle;
  TBstr spec;
};
class KEST_API TFileFinder : public TFileInfo {
 public:
  static const unsigned short kCurrentDirectory[];
  static const unsigned short kParentDirectory[];
  TFileFinder();
  TFileFinder(const TFileFinder&) = delete;
  TFileFinder& operator=(const TFileFinder&) = delete;
  ~TFileFinder();
  bool Find(const unsigned short* spec, bool recursive);
  bool FindNext(bool skipSubdirectory);
  void Close();
  TBstr GetFileSpec() const;
  static int ComparePattern(const unsigned short* name, const unsigned short* pattern);
  // Platform layer.
  static void* FileFinderFind(const TBstr& spec, TFileInfo& info);
  static bool FileFinderFindNext(void* handle, TFileInfo& info);
  static void FileFinderClose(void* handle);

 private:
  TPtrArray handles;
  TBstr directory;
  TBstr pattern;
  bool recursive;
};
}  // namespace KEST

#endif  // KEST_FILE_H
