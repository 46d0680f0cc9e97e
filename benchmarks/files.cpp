// Files and the recursive search beside the C and C++ libraries' own, on a tree of 9,000 entries
// that lies in the cache.

#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "kest/file.h"
#include "support/row.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;

// A folder beside the program, for as long as the program runs.
class Folder {
 public:
  Folder() {
    std::string name =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "tree-XXXXXX";
    if (mkdtemp(name.data()) != nullptr) path_ = name;
  }
  ~Folder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }

  std::string MakeFile(const std::string& name, size_t size) const {
    std::ofstream(Path(name)) << std::string(size, 'x');
    return Path(name);
  }
  std::string MakeFolder(const std::string& name) const {
    std::filesystem::create_directory(Path(name));
    return name + "/";
  }

 private:
  std::string path_;
};

// 30 folders with 9 each, in which 32 files lie, and 60 files more.
constexpr int kEntries = 30 + 30 * 9 + 30 * 9 * 32 + 60;

void MakeTree(const Folder& folder, const std::string& root) {
  for (int file = 0; file < 60; ++file) folder.MakeFile(root + "top" + std::to_string(file), 1);
  for (int outer = 0; outer < 30; ++outer) {
    const std::string above = folder.MakeFolder(root + "folder" + std::to_string(outer));
    for (int inner = 0; inner < 9; ++inner) {
      const std::string leaf = folder.MakeFolder(above + "part" + std::to_string(inner));
      for (int file = 0; file < 32; ++file)
        folder.MakeFile(leaf + "file" + std::to_string(file), 1);
    }
  }
}

// ---- Reading

constexpr size_t kBlock = 64 * 1024;
alignas(4096) char s_block[kBlock];

void KestRead(benchmark::State& state, const std::string& path) {
  TFile file;
  file.Open(TBstr(path.c_str()), 0, false);
  for (auto _ : state) {
    if (file.Read(s_block, kBlock) != kBlock) file.SetPosition(0, 0);
  }
}

void StdioRead(benchmark::State& state, const std::string& path) {
  FILE* const file = fopen(path.c_str(), "rb");
  for (auto _ : state) {
    if (fread(s_block, 1, kBlock, file) != kBlock) fseek(file, 0, SEEK_SET);
  }
  fclose(file);
}

void StreamRead(benchmark::State& state, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  for (auto _ : state) {
    if (file.read(s_block, kBlock)) continue;
    file.clear();
    file.seekg(0);
  }
}

// ---- Opening. Asking for the length leaves the position where it was.

void KestOpen(benchmark::State& state, const std::string& path) {
  const TBstr spec(path.c_str());
  for (auto _ : state) {
    TFile file;
    file.Open(spec, 0, false);
    benchmark::DoNotOptimize(file.GetLength());
    file.Close();
  }
}

void StdioOpen(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    FILE* const file = fopen(path.c_str(), "rb");
    const long position = ftell(file);
    fseek(file, 0, SEEK_END);
    benchmark::DoNotOptimize(ftell(file));
    fseek(file, position, SEEK_SET);
    fclose(file);
  }
}

void StreamOpen(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    std::ifstream file(path, std::ios::binary);
    const std::ifstream::pos_type position = file.tellg();
    file.seekg(0, std::ios::end);
    benchmark::DoNotOptimize(static_cast<long>(file.tellg()));
    file.seekg(position);
    file.close();
  }
}

// ---- Searching, from the folder that the tree lies in. Each adds up the sizes, and has to find
// everything.

const char kRoot[] = "root";

class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string& path) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~WorkingFolder() { std::filesystem::current_path(before_); }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  const std::filesystem::path before_;
};

void Expect(benchmark::State& state, int entries) {
  if (entries != kEntries) state.SkipWithError("the tree has other entries");
}

void KestSearch(benchmark::State& state, const std::string& folder) {
  const WorkingFolder inFolder(folder);
  const TBstr pattern((kRoot + std::string("/*")).c_str());
  for (auto _ : state) {
    int entries = 0;
    long long bytes = 0;
    TFileFinder finder;
    for (bool more = finder.Find(pattern.GetString(), true); more; more = finder.FindNext(false)) {
      ++entries;
      bytes += finder.size;
    }
    benchmark::DoNotOptimize(bytes);
    Expect(state, entries);
  }
}

int s_entries;
long long s_bytes;

void NftwSearch(benchmark::State& state, const std::string& folder) {
  const WorkingFolder inFolder(folder);
  for (auto _ : state) {
    s_entries = -1;  // the root itself
    s_bytes = 0;
    nftw(
        kRoot,
        [](const char*, const struct stat* status, int, FTW*) {
          ++s_entries;
          s_bytes += status->st_size;
          return 0;
        },
        20, FTW_PHYS);
    benchmark::DoNotOptimize(s_bytes);
    Expect(state, s_entries);
  }
}

void FilesystemSearch(benchmark::State& state, const std::string& folder) {
  const WorkingFolder inFolder(folder);
  for (auto _ : state) {
    int entries = 0;
    long long bytes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kRoot)) {
      struct stat status;
      if (lstat(entry.path().c_str(), &status) != 0) continue;
      ++entries;
      bytes += status.st_size;
    }
    benchmark::DoNotOptimize(bytes);
    Expect(state, entries);
  }
}

constexpr char kRead[] = "read 64 KiB";
constexpr char kOpen[] = "open, length, close";
constexpr char kSearch[] = "recursive search, 9,000 entries";

template <typename Function>
void RegisterOn(const std::string& path, const char* row, const char* who, Function function) {
  Row(row, who, [=](benchmark::State& state) { function(state, path); });
}

}  // namespace

void RegisterRows() {
  static const Folder s_folder;
  const std::string file = s_folder.MakeFile("sixteen blocks", 16 * kBlock);
  MakeTree(s_folder, s_folder.MakeFolder(kRoot));
  RegisterOn(file, kRead, "kest", KestRead);
  RegisterOn(file, kRead, "fread", StdioRead);
  RegisterOn(file, kRead, "ifstream", StreamRead);
  RegisterOn(file, kOpen, "kest", KestOpen);
  RegisterOn(file, kOpen, "stdio", StdioOpen);
  RegisterOn(file, kOpen, "ifstream", StreamOpen);
  RegisterOn(s_folder.Path(""), kSearch, "kest", KestSearch);
  RegisterOn(s_folder.Path(""), kSearch, "nftw", NftwSearch);
  RegisterOn(s_folder.Path(""), kSearch, "filesystem", FilesystemSearch);
}
