// Files and folders for tests, below a folder that is removed at the end.

#ifndef KEST_TESTS_FILE_TEMP_TREE_H
#define KEST_TESTS_FILE_TEMP_TREE_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "kest/string.h"

namespace kest_test {

// The 8-bit form of a text.
inline std::string Text(const KEST::TBstr& text) { return text.GetMultibyteString(); }

inline KEST::TBstr Bstr(const std::string& bytes) { return KEST::TBstr(bytes.c_str()); }

// A new folder below $TMPDIR or /tmp. Names given to the members are relative to it.
class TempTree {
 public:
  TempTree() {
    const char* base = getenv("TMPDIR");
    std::string folder = (base != nullptr ? base : "/tmp") + std::string("/file_test_XXXXXX");
    if (mkdtemp(folder.data()) == nullptr) ADD_FAILURE() << "no folder " << folder;
    root = folder;
  }
  ~TempTree() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  std::string Path(const std::string& name = "") const {
    return name.empty() ? root : root + "/" + name;
  }
  KEST::TBstr Spec(const std::string& name = "") const { return Bstr(Path(name)); }

  void MakeFolder(const std::string& name) const {
    EXPECT_TRUE(std::filesystem::create_directories(Path(name))) << name;
  }
  void MakeFile(const std::string& name, const std::string& content = "") const {
    std::ofstream file(Path(name), std::ios::binary);
    file << content;
    EXPECT_TRUE(file.good()) << name;
  }
  // A file of that many bytes that takes no room on the disk.
  void MakeSparseFile(const std::string& name, long long length) const {
    MakeFile(name);
    EXPECT_EQ(0, truncate64(Path(name).c_str(), length)) << name;
  }
  void MakeLink(const std::string& name, const std::string& target) const {
    EXPECT_EQ(0, symlink(target.c_str(), Path(name).c_str())) << name;
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(Path(name)));
  }

 private:
  std::string root;
};

// The working directory for as long as it lives.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::string& path) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~WorkingDirectory() { std::filesystem::current_path(before_); }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
  std::filesystem::path before_;
};

// Descriptors that the process has open.
inline int OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<int>(std::distance(begin(all), end(all)));
}

}  // namespace kest_test

#endif  // KEST_TESTS_FILE_TEMP_TREE_H
