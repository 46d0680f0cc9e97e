// kest-census on trees made to trip it, each result checked by examples/census/verify, which asks
// find, md5sum, sha1sum, openssl, sort, uniq, awk, iconv and date.

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

// A program that runs, its output and errors coming through one pipe.
class Process {
 public:
  // prepare runs in the child, before the program.
  explicit Process(const Strings& command, const std::function<void()>& prepare = nullptr,
                   int output = -1) {
    int ends[2];
    EXPECT_EQ(0, pipe(ends));
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid = fork();
    if (pid == 0) {
      for (int stream : {1, 2}) dup2(output >= 0 ? output : ends[1], stream);
      close(ends[0]);
      close(ends[1]);
      if (prepare) prepare();
      execvp(arguments[0], arguments.data());
      _exit(127);
    }
    close(ends[1]);
    pipeEnd = ends[0];
  }
  ~Process() {
    if (pipeEnd >= 0) close(pipeEnd);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // The next line, with its end; empty when there are no more.
  std::string ReadLine() {
    std::string line;
    for (char c; line.empty() || line.back() != '\n'; line += c) {
      if (read(pipeEnd, &c, 1) != 1) break;
    }
    said += line;
    return line;
  }
  void Signal(int number) { kill(pid, number); }
  void StopReading() {
    close(pipeEnd);
    pipeEnd = -1;
  }
  // The exit status, 1000 and more for a signal, after reading all the rest.
  int Wait() {
    char piece[4096];
    for (ssize_t n; pipeEnd >= 0 && (n = read(pipeEnd, piece, sizeof(piece))) > 0;) {
      said.append(piece, static_cast<size_t>(n));
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

  std::string said;

 private:
  pid_t pid;
  int pipeEnd;
};

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

int CountLines(const std::string& text) {
  int lines = 0;
  for (char c : text) lines += c == '\n';
  return lines;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

constexpr const char* kOutputs[] = {
    "files.tsv",   "MD5SUMS",          "SHA1SUMS",         "MD4SUMS",           "dups.txt",
    "skipped.txt", "report.txt",       "report.u16",       "report.html",       "report.html.txt",
    "CKSUMS",      "certificates.tsv", "certificates.der", "certificates.asn1", "notes.txt",
    "people.tsv",  "addresses.tsv",    "languages.tsv",    "seal.tsv",          "totals.txt"};

constexpr const char* kMachineParts[] = {"seal", "certificates", "people", "addresses",
                                         "languages"};

// Claims about the tree alone, and about signatures: all can be checked on any machine.
// The one that needs tidy comes on top where there is tidy.
constexpr int kTreeClaims = 16;
constexpr int kMachineClaims = 6;
constexpr int kSealClaims = 5;
constexpr int kAllClaims = kTreeClaims + kMachineClaims;

// A temporary folder with the tree to count in "tree" and the results in "out".
class Census : public testing::Test {
 protected:
  void SetUp() override {
    const char* place = getenv("TMPDIR");
    std::string name = std::string(place != nullptr ? place : "/tmp") + "/census-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(name.data()));
    base = name;
    tree = base + "/tree";
    system = base + "/system";
    out = base + "/out";
    ASSERT_EQ(0, mkdir(tree.c_str(), 0755));
    ASSERT_EQ(0, mkdir(system.c_str(), 0755));
  }
  void TearDown() override {
    Process({"chmod", "-R", "u+rwx", base}).Wait();
    Process({"rm", "-rf", base}).Wait();
  }

  void File(const std::string& name, const std::string& content) {
    std::ofstream file(tree + "/" + name, std::ios::binary);
    file << content;
    ASSERT_TRUE(file.good()) << name;
  }
  void Folder(const std::string& name) {
    ASSERT_EQ(0, mkdir((tree + "/" + name).c_str(), 0755)) << name;
  }
  void Link(const std::string& target, const std::string& name) {
    ASSERT_EQ(0, symlink(target.c_str(), (tree + "/" + name).c_str())) << name;
  }
  void Sparse(const std::string& name, const std::string& size) {
    ASSERT_EQ(0, Process({"truncate", "-s", size, tree + "/" + name}).Wait());
  }

  static Strings Command(Strings more) {
    more.insert(more.begin(), KEST_CENSUS);
    return more;
  }
  // Counts the tree into out; returns the status.
  int Run(Strings options = {}, const std::function<void()>& prepare = nullptr) {
    options.insert(options.end(), {tree, "-o", out, "--system", system});
    if (!sealing) options.push_back("--no-seal");  // it costs verify a process a file and cipher
    Process census(Command(options), prepare);
    const int status = census.Wait();
    said = census.said;
    return status;
  }
  // What verify says about out; its status in *status.
  std::string Verify(int* status, const std::function<void()>& prepare = nullptr) {
    Process verify({KEST_CENSUS_VERIFY, out}, [this, &prepare] {
      setenv("KEST_CENSUS", program.c_str(), 1);
      if (prepare) prepare();
    });
    *status = verify.Wait();
    return verify.said;
  }
  void ExpectVerified(const std::function<void()>& prepare = nullptr, int claims = kTreeClaims) {
    int status;
    const std::string table = Verify(&status, prepare);
    EXPECT_EQ(0, status) << table;
    EXPECT_FALSE(Contains(table, "FAILED")) << table;
    EXPECT_EQ(claims + HasTidy(), CountRows(table, " ok\n")) << table;
  }
  // Runs a script of the shell in the folder that stands for the machine's root.
  void Shell(const std::string& script) {
    Process shell({"sh", "-e", "-c", script}, [this] {
      if (chdir(system.c_str()) != 0) _exit(126);
    });
    ASSERT_EQ(0, shell.Wait()) << shell.said;
  }
  // A machine with a little of everything.
  void MakeSystem() {
    Shell(R"(mkdir -p etc/ssl/certs usr/share/ca-certificates/sub
      make() {
        openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout key.pem \
          -utf8 -multivalue-rdn -subj "$1" -out "$2"
      }
      make '/C=DE/O=Größe, "und" <so>;+OU=a\\b/CN= lead #' one.crt
      make '/CN=#two /emailAddress=a@b.example/businessCategory=2.5.4.6=x/GN=A' two.pem
      mkdir -p var/lib/dpkg/updates usr/share/i18n/locales
      package() {
        printf 'Package: %s\nStatus: install ok %s\nMaintainer: %s\nArchitecture: %s\n' "$@"
        printf 'Version: 1\nDescription: x\n Package: inside\n\n'
      }
      { package zed installed 'Zoë <z@x.example>' amd64
        package b installed 'A B <ab@x.example>' amd64
        package c config-files 'A B <ab@x.example>' amd64
        package a installed 'A B <ab@x.example>' all
        package d installed 'Ünn, Back\slash <u@x.example>' all
      } >var/lib/dpkg/status
      printf '%b\n' '127.0.0.1 localhost # me' '# 1.2.3.4' '' '::1 six' '255.255.255.255\tall' \
        '  10.0.0.1 x' '1.2.3 no' '1.2.3.256 no' '01.2.3.4 no' '1.2.3.4.5 no' >etc/hosts
      printf '%s\n' 'search 1.1.1.1' 'nameserver 192.168.10.77' ';nameserver 9.9.9.9' \
        'nameserver fe80::1' >etc/resolv.conf
      for name in en_US de_AT.UTF-8@euro zh_TW zh_HK zh fil_PH fi_FI he_IL C POSIX yi_US.ISO-8859-1 \
        eo en mn_MN .hidden 'odd name'; do : >"usr/share/i18n/locales/$name"; done
      printf '%s\n' 'en_US.UTF-8 UTF-8' 'en_US ISO-8859-1' 'zh_HK BIG5' 'fi_FI UTF-8' \
        >usr/share/i18n/SUPPORTED
      { echo Two: ; cat one.crt; sed 's/$/\r/' two.pem; } >etc/ssl/certs/ca-certificates.crt)");
  }
  static int HasTidy() { return ::system("command -v tidy >/dev/null") == 0; }
  static int CountRows(const std::string& table, const std::string& end) {
    int rows = 0;
    for (size_t at = 0; (at = table.find(end, at)) != std::string::npos; ++at) ++rows;
    return rows;
  }
  // The row that begins with name.
  static std::string RowOf(const std::string& table, const std::string& name) {
    const size_t at = table.find("\n" + name);
    return at == std::string::npos ? "" : table.substr(at + 1, table.find('\n', at + 1) - at - 1);
  }
  std::string Output(const std::string& name) { return ReadAll(out + "/" + name); }
  // The value of a line of totals.txt.
  std::string Total(const std::string& key) {
    const std::string text = "\n" + Output("totals.txt");
    const size_t at = text.find("\n" + key + "\t");
    if (at == std::string::npos) return "";
    const size_t start = at + key.size() + 2;
    return text.substr(start, text.find('\n', start) - start);
  }
  void ExpectNoOutputs() {
    for (const char* name : kOutputs) {
      EXPECT_FALSE(Exists(out + "/" + name)) << name;
      EXPECT_FALSE(Exists(out + "/" + name + ".part")) << name;
    }
  }

  void MakeOddNames();
  void MakeOddFolders();
  void MakeTwins();
  void MakeNoFiles();

  std::string base, tree, system, out, said;
  std::string program = KEST_CENSUS;  // that verify runs
  bool sealing = false;
};

std::string FromHex(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

void Census::MakeOddNames() {
  const char* const kNames[] = {"-",
                                "-rf",
                                " lead",
                                "trail ",
                                "new\nline",
                                "\n",
                                "back\\slash",
                                "tab\tstop",
                                "cr\rlf\n",
                                "\\n",
                                "\\\\t",
                                "'quote\"",
                                "[.1.gz",
                                "[x]",
                                "star*",
                                "q?",
                                "{a,b}",
                                "~",
                                ".hidden",
                                "..two",
                                "...",
                                ".x.txt",
                                "a.",
                                "none",
                                "x.tar.gz",
                                "odd.e\nx",
                                "odd.e\tx",
                                "odd.e\\x",
                                "%s%n",
                                "$(false)",
                                "\xC3\xA9.e",
                                "\xE9.e",
                                "\xED\xA0\x80",
                                "\xF0\x9F\x98\x80",
                                "\xC0\x80",
                                "\x1B[31m"};
  for (const char* name : kNames) File(name, std::string("content of ") + name);
  std::string every;
  for (int c = 1; c < 256; ++c) {
    if (c != '/') every += static_cast<char>(c);
  }
  File(every, every);
  File(std::string(255, 'n'), "longest");
}

void Census::MakeOddFolders() {
  // "[d]" as a pattern finds "d": what lies in one must not be listed for the other.
  for (const char* name :
       {"d", "[d]", "d*", "d?", "back\\", "nl\n", "\t", ".dots", "..dots", " "}) {
    Folder(name);
    File(std::string(name) + "/inside", std::string("in ") + name);
    Folder(std::string(name) + "/.empty");
  }
  std::string deep = "deep";
  Folder(deep);
  for (int i = 0; i < 60; ++i) Folder(deep += "/level");
  File(deep + "/bottom", "deep down");
}

void Census::MakeTwins() {
  Folder("twins");
  for (const char* name : {"a", "b", "c\nx", "c!", "c\\"}) {
    File(std::string("twins/") + name, "five alike");
  }
  File("twins/empty", "");
  File("twins/empty too", "");
  File("twins/x", std::string(300000, 'x'));
  File("twins/x2", std::string(300000, 'x'));
  File("twins/x3", std::string(299999, 'x') + "y");
  // Two blocks of Wang and others (2004): different, with the same MD5.
  const std::string kStart = "d131dd02c5e6eec4693d9a0698aff95c2fcab5";
  File("twins/md5 one",
       FromHex(kStart + "8712467eab4004583eb8fb7f8955ad340609f4b30283e488832571415a"
                        "085125e8f7cdc99fd91dbdf280373c5bd8823e3156348f5bae6dacd436"
                        "c919c6dd53e2b487da03fd02396306d248cda0e99f33420f577ee8ce54"
                        "b67080a80d1ec69821bcb6a8839396f9652b6ff72a70"));
  File("twins/md5 two",
       FromHex(kStart + "0712467eab4004583eb8fb7f8955ad340609f4b30283e4888325f1415a"
                        "085125e8f7cdc99fd91dbd7280373c5bd8823e3156348f5bae6dacd436"
                        "c919c6dd53e23487da03fd02396306d248cda0e99f33420f577ee8ce54"
                        "b67080280d1ec69821bcb6a8839396f965ab6ff72a70"));
}

// Names that are neither files nor directories.
void Census::MakeNoFiles() {
  Link("none", "link to file");
  Link("deep", "link to folder");
  Link("nowhere", "link to nothing");
  Link("..", "link up");
  Link("itself", "itself");
  ASSERT_EQ(0, mkfifo((tree + "/fifo").c_str(), 0644));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_EQ(0, chdir(tree.c_str()));  // the path of a socket must be short
  strcpy(address.sun_path, "socket");
  const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(0, bind(handle, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
  close(handle);
  ASSERT_EQ(0, chdir("/"));
}

TEST_F(Census, IsConfirmedOnAHostileTree) {
  MakeOddNames();
  MakeOddFolders();
  MakeTwins();
  MakeNoFiles();
  const timeval kTimes[][2] = {{{0, 0}, {0, 0}}, {{0, 0}, {-1, 0}}, {{0, 0}, {2147483647, 999999}}};
  const char* const kStamped[] = {"none", "a.", "-"};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(0, utimes((tree + "/" + kStamped[i]).c_str(), kTimes[i]));
  }
  ASSERT_EQ(0, Run()) << said;
  ExpectVerified();
  EXPECT_EQ("complete", Total("state"));
  EXPECT_EQ("5", Total("links"));
  EXPECT_EQ("2", Total("special"));
  EXPECT_EQ("0", Total("problems"));
  EXPECT_EQ("3", Total("duplicate-groups"));
  EXPECT_TRUE(Contains(Output("files.tsv"), "./none\t15\t1970-01-01T00:00:00Z\n"));
  EXPECT_TRUE(Contains(Output("files.tsv"), "./a.\t13\t1969-12-31T23:59:59Z\n"));
  EXPECT_TRUE(Contains(Output("files.tsv"), "./-\t12\t2038-01-19T03:14:07Z\n"));
  EXPECT_TRUE(Contains(Output("skipped.txt"), "./fifo\tfifo\tnot opened\n"));
  EXPECT_TRUE(Contains(Output("skipped.txt"), "./link to folder\tlink\tnot followed\n"));
  EXPECT_TRUE(Contains(Output("totals.txt"), "extension\t.e\\nx\t1\t"));
  // The two with the same MD5 are no twins.
  EXPECT_FALSE(Contains(Output("dups.txt"), "md5 one"));
}

TEST_F(Census, WritesTheSameFilesWithAnyNumberOfWorkers) {
  MakeOddNames();
  MakeOddFolders();
  MakeTwins();
  std::map<std::string, std::string> first;
  for (const char* workers : {"1", "2", "8", "64"}) {
    SCOPED_TRACE(workers);
    ASSERT_EQ(0, Run({"--workers", workers})) << said;
    for (const char* name : kOutputs) {
      if (first.count(name) == 0) first[name] = Output(name);
      EXPECT_EQ(first[name], Output(name)) << name;
    }
  }
  EXPECT_EQ(
      "\xFF\xFE"
      "C",
      first["report.u16"].substr(0, 3));
}

TEST_F(Census, CountsAnEmptyDirectory) {
  ASSERT_EQ(0, Run()) << said;
  ExpectVerified();
  EXPECT_EQ("0", Total("files"));
  EXPECT_EQ("0", Total("directories"));
}

TEST_F(Census, TakesTheNamesThatMatchAPatternAsAShellDoes) {
  MakeOddNames();
  MakeOddFolders();
  MakeNoFiles();
  const struct {
    const char* pattern;
    int files;
  } kRows[] = {{"*.e", 2},     {"*.gz", 2},    {"x.*gz", 1},     {".*", 4},
               {"\\.hid*", 1}, {"[.]hid*", 0}, {"inside", 10},   {"[[]x]", 1},
               {"ins?de", 10}, {"bottom", 1},  {"back\\\\*", 1}, {"none", 1},
               {"no such", 0}, {"*\n*", 5},    {"*", 45},        {"link*", 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.pattern);
    ASSERT_EQ(0, Run({"--pattern", row.pattern})) << said;
    ExpectVerified();
    EXPECT_EQ(std::to_string(row.files), Total("files"));
    EXPECT_EQ("81", Total("directories"));
  }
}

TEST_F(Census, FollowsALinkThatIsTheDirectoryItself) {
  File("file", "x");
  Folder("in");
  ASSERT_EQ(0, symlink("tree", (base + "/way").c_str()));
  Process census(Command({base + "/way", "-o", out, "--system", system, "--no-seal"}));
  ASSERT_EQ(0, census.Wait()) << census.said;
  EXPECT_EQ(tree, Total("directory"));
  ExpectVerified();
}

TEST_F(Census, LeavesItsOwnOutputOut) {
  File("file", "x");
  Folder("in");
  out = tree + "/in/results";
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(0, Run()) << said;
    ExpectVerified();
    EXPECT_EQ("1", Total("files"));
    EXPECT_EQ("2", Total("directories"));
    EXPECT_EQ("./in/results\tdirectory\tthe census's own output\n", Output("skipped.txt"));
  }
  out = tree;
  EXPECT_EQ(2, Run());
  EXPECT_TRUE(Contains(said, "cannot lie in DIR itself")) << said;
  ExpectNoOutputs();
}

TEST_F(Census, RefusesBadOptions) {
  const struct {
    Strings options;
    int status;
    const char* says;
  } kRows[] = {
      {{"--help"}, 0, "Exit status:"},
      {{"--version"}, 0, "kest-census 1."},
      {{"--what"}, 2, "unknown option --what"},
      {{"-x"}, 2, "unknown option -x"},
      {{"--help=x"}, 2, "unknown option --help"},
      {{"-o"}, 2, "-o needs a value"},
      {{"--output="}, 2, "--output needs a value"},
      {{"--workers"}, 2, "--workers needs a value"},
      {{"--workers", "0"}, 2, "from 1 to 64, not 0"},
      {{"--workers", "65"}, 2, "from 1 to 64, not 65"},
      {{"--workers", "-1"}, 2, "from 1 to 64, not -1"},
      {{"--workers", "2x"}, 2, "from 1 to 64, not 2x"},
      {{"--workers=4294967297"}, 2, "from 1 to 64"},
      {{"--pattern", ""}, 2, "--pattern needs a value"},
      {{"--pattern", "a/b"}, 2, "holds no /"},
      {{"one", "two"}, 2, "one directory at a time: two"},
      {{""}, 2, "an empty name is no directory"},
      {{"--", "--help", "-o"}, 2, "one directory at a time: -o"},
      {{"/no/such/place"}, 3, "/no/such/place: No such file or directory"},
      {{"/dev/null"}, 3, "/dev/null: not a directory"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.options));
    Process census(Command(row.options), [this] { EXPECT_EQ(0, chdir(base.c_str())); });
    EXPECT_EQ(row.status, census.Wait());
    EXPECT_TRUE(Contains(census.said, row.says)) << census.said;
    EXPECT_FALSE(Exists(base + "/census"));
  }
}

TEST_F(Census, TellsWhenTheOutputCannotBeWritten) {
  File("file", "x");
  for (const std::string& bad : {std::string("/dev/full"), tree + "/file", tree + "/file/below"}) {
    SCOPED_TRACE(bad);
    Process census(Command({tree, "-o", bad}));
    EXPECT_EQ(3, census.Wait());
    EXPECT_TRUE(Contains(census.said, "kest-census: " + bad)) << census.said;
    EXPECT_TRUE(Contains(census.said, "Not a directory")) << census.said;
  }
  EXPECT_EQ("x", ReadAll(tree + "/file"));
}

// No file may grow beyond this, as if the disk were full; the signal that goes with it is ignored.
void LimitFileSize(rlim_t bytes) {
  const rlimit limit = {bytes, bytes};
  setrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, SIG_IGN);
}

TEST_F(Census, LeavesTheOldResultsWhenTheDiskIsFull) {
  for (int i = 0; i < 200; ++i) File("file" + std::to_string(i), std::to_string(i));
  ASSERT_EQ(3, Run({}, [] { LimitFileSize(2000); }));
  EXPECT_TRUE(Contains(said, "files.tsv.part: File too large")) << said;
  ExpectNoOutputs();

  ASSERT_EQ(0, Run());
  File("one more", "x");
  std::map<std::string, std::string> before;
  for (const char* name : kOutputs) before[name] = Output(name);
  for (const rlim_t limit : {rlim_t{1}, rlim_t{9000}}) {  // the first file, a later one
    SCOPED_TRACE(limit);
    ASSERT_EQ(3, Run({}, [=] { LimitFileSize(limit); }));
    for (const char* name : kOutputs) {
      EXPECT_EQ(before[name], Output(name)) << name;
      EXPECT_FALSE(Exists(out + "/" + name + ".part")) << name;
    }
  }
}

TEST_F(Census, LeavesNothingOnATinyFileSystem) {
  ASSERT_EQ(0, mkdir(out.c_str(), 0755));
  if (mount("census", out.c_str(), "tmpfs", 0, "size=32k") != 0) {
    GTEST_SKIP() << "no right to mount";
  }
  for (int i = 0; i < 400; ++i) File("file" + std::to_string(i), std::to_string(i));
  EXPECT_EQ(3, Run());
  EXPECT_TRUE(Contains(said, "No space left on device")) << said;
  ExpectNoOutputs();
  EXPECT_EQ(0, umount(out.c_str()));
}

// Even the superuser must heed the modes of files then.
void GiveUpPrivileges() {
  constexpr int kDacOverride = 1, kDacReadSearch = 2;
  prctl(PR_CAPBSET_DROP, kDacOverride, 0, 0, 0);
  prctl(PR_CAPBSET_DROP, kDacReadSearch, 0, 0, 0);
}

TEST_F(Census, ListsWhatItCannotRead) {
  File("good", "x");
  File("secret", "x");
  Folder("closed");
  File("closed/file", "x");
  Folder("listed");  // its names can be read, but nothing about them
  File("listed/file", "x");
  Folder("found");  // nothing can be listed
  File("found/file", "x");
  Sparse("large", "2G");
  const std::pair<const char*, mode_t> kModes[] = {
      {"secret", 0000}, {"closed", 0000}, {"listed", 0444}, {"found", 0111}};
  for (const auto& mode : kModes) {
    ASSERT_EQ(0, chmod((tree + "/" + mode.first).c_str(), mode.second));
  }
  if (Process({"cat", tree + "/secret"}, GiveUpPrivileges).Wait() == 0) {
    GTEST_SKIP() << "everything is readable here";
  }
  ASSERT_EQ(1, Run({}, GiveUpPrivileges)) << said;
  EXPECT_EQ(
      "./closed\tdirectory\tcannot be listed: Permission denied\n"
      "./found\tdirectory\tcannot be listed: Permission denied\n"
      "./large\tfile\t2 GiB or more\n"
      "./listed\tdirectory\tcannot be listed: Permission denied\n"
      "./secret\tfile\tcannot be opened: Permission denied\n",
      Output("skipped.txt"));
  ExpectVerified(GiveUpPrivileges);
  EXPECT_EQ("5", Total("problems"));
  EXPECT_EQ("3", Total("files"));
  EXPECT_EQ("1", Total("digested"));
  EXPECT_EQ("3", Total("directories"));

  ASSERT_EQ(0, chmod(tree.c_str(), 0));
  EXPECT_EQ(3, Run({}, GiveUpPrivileges));
  EXPECT_TRUE(Contains(said, "cannot be listed: Permission denied")) << said;
  ASSERT_EQ(0, chmod(tree.c_str(), 0755));
}

TEST_F(Census, ListsFoldersWhosePathIsTooLong) {
  ASSERT_EQ(0, chdir(tree.c_str()));
  for (int i = 0; i < 20; ++i) {
    const std::string name(250, static_cast<char>('a' + i));
    ASSERT_EQ(0, mkdir(name.c_str(), 0755));
    ASSERT_EQ(0, chdir(name.c_str()));
    std::ofstream("file") << i;
  }
  ASSERT_EQ(0, chdir("/"));
  EXPECT_EQ(1, Run()) << said;
  EXPECT_EQ(1, CountLines(Output("skipped.txt")));
  EXPECT_TRUE(Contains(Output("skipped.txt"), "\tcannot be listed: its path is too long\n"));
  EXPECT_EQ("1", Total("problems"));
  ExpectVerified();
}

TEST_F(Census, GivesUpOnAFileThatKeepsChanging) {
  File("calm", "x");
  Sparse("log", "32M");
  const std::string log = tree + "/log";
  const pid_t writer = fork();
  if (writer == 0) {
    const int handle = open(log.c_str(), O_WRONLY | O_APPEND);
    while (write(handle, "x", 1) == 1) {
    }
    _exit(1);
  }
  EXPECT_EQ(1, Run()) << said;
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
  EXPECT_EQ("./log\tfile\tchanges while it is read\n", Output("skipped.txt"));
  EXPECT_EQ(1, CountLines(Output("MD5SUMS")));
}

TEST_F(Census, DoesNotTrustAFileWhoseSizeIsUntrue) {
  const std::string folder = "/proc/sys/kernel/random";
  if (ReadAll(folder + "/boot_id").empty()) GTEST_SKIP() << "no such folder here";
  Process census(Command({folder, "--pattern", "boot_id", "-o", out}));
  EXPECT_EQ(1, census.Wait()) << census.said;
  EXPECT_TRUE(Contains(Output("skipped.txt"), "./boot_id\tfile\t")) << Output("skipped.txt");
  EXPECT_EQ("", Output("MD5SUMS"));
}

// A tree that keeps a census busy for minutes: first small files, then large ones without blocks.
class LongCensus : public Census {
 protected:
  void SetUp() override {
    Census::SetUp();
    for (int i = 0; i < 300; ++i) File("small" + std::to_string(i), std::to_string(i / 2));
    Folder("then");
    for (int i = 0; i < 40; ++i) Sparse("then/large" + std::to_string(i), "1G");
  }
  // Runs until the small files are done, then sends the signal.
  int RunAndSignal(int number) {
    Process census(Command({tree, "-o", out, "--system", system, "--no-seal"}));
    while (!Contains(census.ReadLine(), " 300 files")) {
    }
    census.Signal(number);
    const int status = census.Wait();
    said = census.said;
    return status;
  }
};

TEST_F(LongCensus, EndsInOrderWhenInterrupted) {
  const std::pair<int, int> kRows[] = {{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.first);
    EXPECT_EQ(row.second, RunAndSignal(row.first)) << said;
    EXPECT_TRUE(Contains(said, "interrupted; the results hold what was done")) << said;
    EXPECT_EQ("interrupted", Total("state"));
    EXPECT_EQ("300", Total("digested"));
    ExpectVerified();
  }
}

TEST_F(LongCensus, IsConfirmedForWhatWasDoneOnly) {
  ASSERT_EQ(130, RunAndSignal(SIGINT)) << said;
  // A file that is not there cannot have been done.
  std::ofstream(out + "/files.tsv", std::ios::app) << "./never\t1\t2001-01-01T00:00:00Z\n";
  int status;
  const std::string table = Verify(&status);
  EXPECT_EQ(1, status);
  EXPECT_TRUE(Contains(table, "./never")) << table;
}

TEST_F(Census, IgnoresSignalsThatItsParentIgnores) {
  File("first", "x");
  Sparse("large", "64M");
  Process census(Command({tree, "-o", out, "--system", system, "--no-seal"}),
                 [] { signal(SIGINT, SIG_IGN); });
  census.ReadLine();
  census.Signal(SIGINT);
  EXPECT_EQ(0, census.Wait()) << census.said;
  EXPECT_EQ("complete", Total("state"));
}

TEST_F(Census, GoesOnWhenNobodyReadsItsProgress) {
  File("file", "x");
  Process census(Command({tree, "-o", out, "--system", system, "--no-seal"}),
                 [] { signal(SIGPIPE, SIG_DFL); });
  census.StopReading();
  EXPECT_EQ(0, census.Wait());
  ExpectVerified();
}

TEST_F(Census, DrawsABarOnATerminal) {
  for (int i = 0; i < 50; ++i) File("file" + std::to_string(i), "x");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(0, grantpt(terminal));
  ASSERT_EQ(0, unlockpt(terminal));
  const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY);
  constexpr unsigned short kWidths[] = {100, 40, 8};
  for (const unsigned short width : kWidths) {
    SCOPED_TRACE(width);
    const winsize size = {24, width, 0, 0};
    ASSERT_EQ(0, ioctl(screen, TIOCSWINSZ, &size));
    Process census(Command({tree, "-o", out, "--system", system, "--no-seal"}), nullptr, screen);
    EXPECT_EQ(0, census.Wait());
    std::string drawn;
    while (!Contains(drawn, "written to ") || drawn.back() != '\n') {
      char text[4096];
      const ssize_t count = read(terminal, text, sizeof(text));
      ASSERT_GT(count, 0);
      drawn.append(text, static_cast<size_t>(count));
    }
    ASSERT_EQ('\r', drawn[0]);
    const std::string bar = drawn.substr(1, drawn.find("\x1B[K") - 1);
    EXPECT_LT(bar.size(), width);
    EXPECT_EQ(width == 100 ? "[" : "", bar.substr(0, width == 100 ? 1 : 0)) << bar;
    EXPECT_EQ(width == 100, Contains(bar, "] ")) << bar;
    EXPECT_TRUE(Contains(drawn, "\r\x1B[K50 files")) << drawn;
  }
  close(screen);
  close(terminal);
}

// Each file broken in every way, several at a time where no row depends on more than one of them.
TEST_F(Census, VerifyNoticesEveryBrokenFile) {
  MakeOddNames();
  MakeTwins();
  MakeNoFiles();
  Sparse("large", "2G");
  MakeSystem();
  ASSERT_EQ(1, Run()) << said;
  ExpectVerified(nullptr, kAllClaims);
  const std::string kFiles = "files.tsv", kCounts = "totals.txt: counts", kLists = "each file",
                    kExtensions = "totals.txt: extensions", kDups = "dups.txt",
                    kReport = "report.u16", kSpecial = "skipped.txt: links",
                    kUnread = "skipped.txt: unreadable", kChecksums = "CKSUMS";
  const struct {
    std::vector<std::pair<const char*, const char*>> edits;  // a file and what sed does to it
    Strings rows;                                            // that must fail, and no others
  } kRows[] = {
      {{{"files.tsv", "/none/s/Z$/0/"},
        {"MD5SUMS", "3s/[0-9]/a/"},
        {"SHA1SUMS", "4s/[0-9]/a/"},
        {"MD4SUMS", "6s/[0-9]/a/"},
        {"skipped.txt", "/fifo/d"},
        {"report.txt", "s/Bytes/bytes/"},
        {"totals.txt", "s/^files\\t/&1/"},
        {"half.part", "s/x/y/"}},
       {kFiles, "MD5SUMS ", "SHA1SUMS ", "MD4SUMS ", kSpecial, kReport, kCounts, "nothing half",
        "report.html shows", "report.html back", kChecksums}},
      {{{"dups.txt", "2d"},
        {"totals.txt", "s/^extension\\t\\.gz/&1/"},
        {"skipped.txt", "s/large\\t/none\\t/"},
        {"report.u16", "s/C/c/"},
        {"CKSUMS", "s/dups.txt/dope.txt/"},
        {"report.html", "s/Census/census/"},
        {"report.html.txt", "s/Census/census/"}},
       {kDups, kExtensions, kLists, kUnread, kReport, "report.html shows", "report.html back",
        kChecksums}},
      {{{"files.tsv", "/none/s/15/16/"},
        {"dups.txt", "/^$/d"},
        {"skipped.txt", "s/2 GiB or more//"}},
       {kFiles, kCounts, kExtensions, kDups, kUnread, kChecksums}},
      {{{"files.tsv", "1d"}}, {kFiles, kLists, kCounts, kExtensions, kChecksums}},
      {{{"MD5SUMS", "2d"}}, {kLists, kCounts, kDups, kChecksums}},
      {{{"SHA1SUMS", "5d"}}, {kLists, kDups, kChecksums}},
      {{{"MD4SUMS", "$d"}, {"totals.txt", "s/^links\\t/&1/"}}, {kLists, kCounts, kChecksums}},
      {{{"CKSUMS", "$d"}}, {kChecksums}},
      {{{"CKSUMS", "1s/^./x/"}}, {kChecksums}},
      {{{"skipped.txt", "/large/d"},
        {"dups.txt", "s/twins/twine/"},
        {"totals.txt", "s/^state.*/state\\tso so/"}},
       {kLists, kDups, kCounts, kChecksums}},
      {{{"skipped.txt", "s/link\\tnot/fifo\\tnot/"}, {"totals.txt", "s/^bytes\\t/&1/"}},
       {kSpecial, kCounts, kChecksums}},
      {{{"totals.txt", "s/^directories\\t/&1/"}}, {kCounts}},
      {{{"totals.txt", "s/^special\\t/&1/"}}, {kCounts}},
      {{{"totals.txt", "s/^digested\\t/&1/"}}, {kCounts}},
      {{{"certificates.der", "1s/^./1/"},
        {"certificates.asn1", "1s/^0/1/"},
        {"certificates.tsv", "s/lead/load/"}},
       {"certificates.der", "certificates.asn1", "certificates.tsv", kChecksums}},
      {{{"people.tsv", "2s/zed/zod/"}, {"addresses.tsv", "$s/1/2/"}, {"languages.tsv", "$s/1/2/"}},
       {"people.tsv", "addresses.tsv", "languages.tsv", kChecksums}},
  };
  const std::string whole = base + "/whole";
  ASSERT_EQ(0, rename(out.c_str(), whole.c_str()));
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.edits[0].first) + ": " + row.edits[0].second);
    ASSERT_EQ(0, Process({"cp", "-r", whole, out}).Wait());
    for (const auto& edit : row.edits) {
      const std::string path = out + "/" + edit.first;
      if (!Exists(path)) std::ofstream(path) << "x";
      const std::string before = ReadAll(path);
      ASSERT_EQ(0, Process({"env", "LC_ALL=C", "sed", "-i", edit.second, path}).Wait());
      ASSERT_NE(before, ReadAll(path)) << path;
    }
    int status;
    const std::string table = Verify(&status);
    EXPECT_EQ(1, status);
    EXPECT_EQ(row.rows.size(), static_cast<size_t>(CountRows(table, "  FAILED\n"))) << table;
    for (const std::string& name : row.rows) {
      EXPECT_TRUE(Contains(RowOf(table, name), " FAILED")) << name << "\n" << table;
    }
    ASSERT_EQ(0, Process({"rm", "-r", out}).Wait());
  }
}

TEST_F(Census, WritesThePageWithItsTextEscaped) {
  File("<b> & \"q\" &lt; &.<BR>", std::string(50, 'x'));
  ASSERT_EQ(0, Run()) << said;
  EXPECT_TRUE(Contains(Output("report.html"),
                       "./&lt;b&gt; &amp; &quot;q&quot; &amp;lt; &amp;.&lt;BR&gt;<BR>"))
      << Output("report.html");
  EXPECT_EQ(Output("report.txt"), Output("report.html.txt"));
  ExpectVerified();
  if (HasTidy() == 0) GTEST_SKIP() << "no tidy here";
  std::ofstream(out + "/report.html", std::ios::app) << "<nosuchtag>";
  int status;
  EXPECT_TRUE(Contains(RowOf(Verify(&status), "report.html: markup"), " FAILED"));
}

TEST_F(Census, SkipsFormatsThatAreNotReady) {
  File("file", "x");
  const std::string modules = base + "/[modules]";
  ASSERT_EQ(0, mkdir(modules.c_str(), 0755));
  ASSERT_EQ(0, symlink(KEST_CENSUS_UNREADY, (modules + "/a.so").c_str()));
  std::ofstream(modules + "/b.so") << "no module";
  ASSERT_EQ(0, symlink(KEST_CENSUS_CKSUM, (modules + "/c.so").c_str()));
  ASSERT_EQ(0, symlink(KEST_CENSUS_CKSUM, (modules + "/d.so").c_str()));  // the same file twice
  ASSERT_EQ(0, symlink(KEST_CENSUS_GREETER, (modules + "/e.so").c_str()));
  ASSERT_EQ(0, symlink("c.so", (modules + "/f.other").c_str()));
  ASSERT_EQ(0, Run({"--formats", modules})) << said;
  const std::string start = "formats\t" + modules + "/";
  EXPECT_TRUE(Contains(Output("notes.txt"), start + "a.so\tno module, or not ready\n" + start +
                                                "b.so\tno module, or not ready\n" + start +
                                                "d.so\tno output format\n" + start +
                                                "e.so\tno output format\n"))
      << Output("notes.txt");
  ExpectVerified();
  // Without the module there is no file, and nothing to check.
  Process({"rm", "-r", out, modules}).Wait();
  ASSERT_EQ(0, Run({"--formats", modules})) << said;
  EXPECT_FALSE(Exists(out + "/CKSUMS"));
  int status;
  EXPECT_TRUE(Contains(RowOf(Verify(&status), "CKSUMS"), "-  not checked: no module for it"))
      << said;
}

TEST_F(Census, SumsASampleOfALargeTree) {
  for (size_t i = 0; i < 450; ++i) File("file" + std::to_string(i), std::string(i, 'x'));
  ASSERT_EQ(0, Run()) << said;
  EXPECT_EQ(90, CountRows(Output("CKSUMS"), " ./"));
  ExpectVerified();
}

TEST_F(Census, ChecksSignatures) {
  File("file", "x");
  ASSERT_EQ(0, Run()) << said;
  Shell(R"(for bits in 512 1024 2048; do
      openssl genrsa -out key$bits $bits
      openssl rsa -in key$bits -pubout -out $bits.pem
      openssl rsa -in key$bits -pubout -outform DER -out $bits.der
      openssl dgst -sha1 -sign key$bits -out $bits.sha1 ../out/SHA1SUMS
      openssl dgst -md5 -sign key$bits -out $bits.md5 ../out/SHA1SUMS
    done
    sed 's/$/\r/' 1024.pem >crlf.pem
    openssl dgst -sha256 -sign key1024 -out 1024.sha256 ../out/SHA1SUMS
    # Without the digest's name, with bytes behind it, with the other padding.
    openssl dgst -sha1 -binary ../out/SHA1SUMS >digest
    openssl rsautl -sign -inkey key1024 -in digest -out 1024.bare
    { printf '\060\041\060\011\006\005\053\016\003\002\032\005\000\004\024'; cat digest; } >info
    openssl rsautl -sign -inkey key1024 -in info -out 1024.whole
    { cat info; echo; } | openssl rsautl -sign -inkey key1024 -out 1024.longer
    openssl rsautl -encrypt -pubin -inkey 1024.pem -in info -out 1024.encrypted
    head -c 127 1024.sha1 >1024.short
    { cat 1024.sha1; echo; } >1024.long
    head -c 100 1024.der >cut.der
    { cat 1024.der; echo; } >long.der
    : >empty
    openssl ecparam -genkey -name prime256v1 -noout -out ec
    openssl ec -in ec -pubout -out ec.pem)");
  const struct {
    const char *key, *signature;
    int status;
  } kRows[] = {
      {"512.pem", "512.sha1", 0},        {"1024.pem", "1024.sha1", 0},
      {"2048.der", "2048.sha1", 0},      {"1024.der", "1024.md5", 0},
      {"2048.pem", "2048.md5", 0},       {"crlf.pem", "1024.sha1", 0},
      {"1024.pem", "1024.whole", 0},     {"1024.pem", "2048.sha1", 1},
      {"2048.pem", "1024.sha1", 1},      {"1024.pem", "1024.sha256", 1},
      {"1024.pem", "1024.bare", 1},      {"1024.pem", "1024.longer", 1},
      {"1024.pem", "1024.encrypted", 1}, {"1024.pem", "1024.short", 1},
      {"1024.pem", "1024.long", 1},      {"1024.pem", "empty", 1},
      {"cut.der", "1024.sha1", 3},       {"long.der", "1024.sha1", 3},
      {"empty", "1024.sha1", 3},         {"ec.pem", "1024.sha1", 3},
      {"key1024", "1024.sha1", 3},       {"nowhere", "1024.sha1", 3},
      {"1024.pem", "nowhere", 3},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.key) + " " + row.signature);
    Process check(
        Command({"--verify", system + "/" + row.key, system + "/" + row.signature, "-o", out}));
    EXPECT_EQ(row.status, check.Wait()) << check.said;
    EXPECT_EQ(row.status == 1, Contains(check.said, "NOT signed")) << check.said;
  }
  const std::string key = system + "/1024.pem", signature = system + "/1024.sha1";
  EXPECT_EQ(0, Process(Command({"--verify", key, signature, out + "/SHA1SUMS"})).Wait());
  EXPECT_EQ(1, Process(Command({"--verify", key, signature, out + "/MD5SUMS"})).Wait());
  EXPECT_EQ(3, Process(Command({"--verify", key, signature, out + "/nowhere"})).Wait());
  EXPECT_EQ(2, Process(Command({"--verify", key})).Wait());
  // Every bit counts.
  const std::string good = ReadAll(signature);
  for (size_t bit = 0; bit < 8 * good.size(); bit += 37) {
    std::string bad = good;
    bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ 1 << bit % 8);
    std::ofstream(signature, std::ios::binary) << bad;
    EXPECT_EQ(1, Process(Command({"--verify", key, signature, "-o", out})).Wait()) << bit;
  }
}

TEST_F(Census, VerifyNoticesAProgramThatAcceptsAnySignature) {
  File("file", "x");
  ASSERT_EQ(0, Run()) << said;
  for (const char* other : {"/bin/true", "/bin/false"}) {
    program = other;
    int status;
    const std::string table = Verify(&status);
    EXPECT_EQ(1, status);
    EXPECT_TRUE(Contains(RowOf(table, "kest-census --verify"), " FAILED")) << table;
  }
  program = base + "/nowhere";
  int status;
  const std::string table = Verify(&status);
  EXPECT_EQ(0, status);
  EXPECT_TRUE(Contains(table, "-  not checked: KEST_CENSUS does not name")) << table;
}

TEST_F(Census, SealsEveryManifest) {
  File("file", "x");
  File("large", std::string(200000, 'x'));
  sealing = true;
  ASSERT_EQ(0, Run()) << said;
  ExpectVerified(nullptr, kTreeClaims + kSealClaims);
  const std::string first = Output("seal.tsv");
  ASSERT_EQ(0, Run()) << said;
  EXPECT_NE(first, Output("seal.tsv"));  // keys are new each time
  const struct {
    const char* file;
    const char* edit;
    Strings rows;
  } kRows[] = {
      {"sealed/files.tsv.des-cbc", "s/^./x/", {"sealed with DES"}},
      {"sealed/notes.txt.rc2-cbc", "s/^./x/", {"sealed with RC2"}},
      {"sealed/totals.txt.rc4", "s/^./x/", {"sealed with RC4"}},
      {"seal.tsv", "/^MD5SUMS\tdes-cbc/d", {"sealed with DES"}},
      {"seal.tsv", "/^MD5SUMS\thmac-md5/s/.$/x/", {"seal.tsv: HMAC-MD5"}},
      {"seal.tsv", "/^MD5SUMS\thmac-sha1/s/.$/x/", {"seal.tsv: HMAC-SHA1"}},
      {"seal.tsv",
       "d",
       {"sealed with DES", "sealed with RC2", "sealed with RC4", "seal.tsv: HMAC-MD5",
        "seal.tsv: HMAC-SHA1"}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.file) + ": " + row.edit);
    const std::string path = out + "/" + row.file, before = ReadAll(path);
    ASSERT_EQ(0, Process({"env", "LC_ALL=C", "sed", "-i", row.edit, path}).Wait());
    ASSERT_NE(before, ReadAll(path));
    int status;
    const std::string table = Verify(&status);
    EXPECT_EQ(1, status);
    EXPECT_EQ(static_cast<int>(row.rows.size()), CountRows(table, "  FAILED\n")) << table;
    for (const std::string& name : row.rows) {
      EXPECT_TRUE(Contains(RowOf(table, name), " FAILED")) << name << "\n" << table;
    }
    std::ofstream(path, std::ios::binary) << before;
  }
  // Without a seal the old one does not stay.
  sealing = false;
  ASSERT_EQ(0, Run()) << said;
  EXPECT_EQ("", Output("seal.tsv"));
  EXPECT_TRUE(Contains(Output("notes.txt"), "seal\trandom bytes\tnot sealed, as asked\n"));
  ExpectVerified();
}

TEST_F(Census, ReadsCertificatesOfEveryPlace) {
  File("file", "x");
  MakeSystem();
  ASSERT_EQ(0, Run()) << said;
  const std::string subject =
      "\tC=DE, OU=a\\\\b + O=Größe\\, \\\"und\\\" \\<so\\>\\;, CN=\\ lead #\n";
  EXPECT_TRUE(Contains(Output("certificates.tsv"), subject)) << Output("certificates.tsv");
  EXPECT_TRUE(Contains(Output("certificates.tsv"),
                       "\tCN=\\#two\\ , emailAddress=a@b.example, "
                       "2.5.4.15=2.5.4.6=x, 2.5.4.42=A\n"))
      << Output("certificates.tsv");
  // Without the bundle the files beside it count; without these, the sources.
  Shell("rm etc/ssl/certs/*; cp one.crt two.pem etc/ssl/certs; cp one.crt etc/ssl/certs/.not.crt");
  ASSERT_EQ(0, Run()) << said;
  EXPECT_EQ(2, CountLines(Output("certificates.tsv")));
  EXPECT_TRUE(Contains(Output("certificates.tsv"), "/etc/ssl/certs/two.pem\t"));
  ExpectVerified(nullptr, kAllClaims);
  Shell("rm etc/ssl/certs/*; cp one.crt usr/share/ca-certificates/sub; : >usr/share/empty.crt");
  ASSERT_EQ(0, Run()) << said;
  EXPECT_TRUE(Contains(Output("certificates.tsv"), "/usr/share/ca-certificates/sub/one.crt\t"));
  ExpectVerified(nullptr, kAllClaims);
}

TEST_F(Census, TellsOfPeopleAddressesAndLanguages) {
  MakeSystem();
  ASSERT_EQ(0, Run()) << said;
  EXPECT_EQ(
      "A B <ab@x.example>\t2\ta b\n"
      "Zoë <z@x.example>\t1\tzed\n"
      "Ünn, Back\\\\slash <u@x.example>\t1\td\n",
      Output("people.tsv"));
  EXPECT_EQ(
      "/etc/hosts\t127.0.0.1\t2130706433\t127.0.0.1\n"
      "/etc/hosts\t255.255.255.255\t4294967295\t255.255.255.255\n"
      "/etc/hosts\t10.0.0.1\t167772161\t10.0.0.1\n"
      "/etc/resolv.conf\t192.168.10.77\t3232238157\t192.168.10.77\n",
      Output("addresses.tsv"));
  EXPECT_EQ(6, CountRows(Output("notes.txt"), " is no IPv4 address in full\n"));
  EXPECT_EQ(
      "C\t-1\t-1\nPOSIX\t-1\t-1\nde_AT.UTF-8@euro\t2\t13\nen\t0\t-1\nen_US\t0\t3\n"
      "eo\t-1\t-1\nfi_FI\t13\t13\nfil_PH\t-1\t-1\nhe_IL\t10\t-1\nmn_MN\t57\t-1\n"
      "odd name\t-1\t-1\nyi_US.ISO-8859-1\t41\t3\nzh\t-1\t-1\nzh_HK\t-1\t-1\n"
      "zh_TW\t19\t-1\n",
      Output("languages.tsv"));
  ExpectVerified(nullptr, kAllClaims);
  Shell("mv usr/share/i18n/locales usr/share/locale; rm usr/share/i18n/SUPPORTED etc/hosts");
  ASSERT_EQ(0, Run()) << said;
  EXPECT_TRUE(Contains(Output("languages.tsv"), "en_US\t0\t-1\n"));
  ExpectVerified(nullptr, kAllClaims);
}

TEST_F(Census, NotesCertificatesThatCannotBeRead) {
  MakeSystem();
  Shell(R"({ sed 3s/./-/ one.crt; cat two.pem; sed 2s/^M/N/ one.crt
      printf -- '-----BEGIN CERTIFICATE-----\n-----END CERTIFICATE-----\n'
    } >etc/ssl/certs/ca-certificates.crt)");
  ASSERT_EQ(0, Run()) << said;
  const std::string start = "certificates\t/etc/ssl/certs/ca-certificates.crt\tcertificate ";
  EXPECT_TRUE(Contains(
      Output("notes.txt"),
      start + "1 cannot be read\n" + start + "3 cannot be read\n" + start + "4 cannot be read\n"))
      << Output("notes.txt");
  ExpectVerified(nullptr, kAllClaims);
}

TEST_F(Census, SaysWhatTheMachineLacks) {
  ASSERT_EQ(0, Run()) << said;
  int status;
  const std::string table = Verify(&status);
  EXPECT_EQ(0, status);
  EXPECT_EQ(kTreeClaims + HasTidy(), CountRows(table, " ok\n")) << table;
  for (const char* part : kMachineParts) {
    EXPECT_TRUE(Contains("\n" + Output("notes.txt"), std::string("\n") + part + "\t")) << part;
  }
  EXPECT_EQ(3, CountRows(table, "-  not checked: no certificates here\n")) << table;
  // Empty without a word of it is no answer.
  std::ofstream(out + "/notes.txt") << "";
  EXPECT_EQ(kAllClaims - kTreeClaims + kSealClaims, CountRows(Verify(&status), "  FAILED\n"));
  EXPECT_EQ(1, status);
  system = base + "/nowhere";
  EXPECT_EQ(3, Run());
}

TEST_F(Census, VerifyNoticesAChangedTree) {
  File("one", "x");
  File("two", "y");
  ASSERT_EQ(0, Run());
  File("two", "z");
  int status;
  const std::string table = Verify(&status);
  EXPECT_EQ(1, status);
  for (const char* row : {"MD5SUMS ", "SHA1SUMS ", "MD4SUMS "}) {
    EXPECT_TRUE(Contains(RowOf(table, row), " FAILED")) << table;
  }
}

TEST_F(Census, VerifyNeverCallsOkWhatItDidNotCheck) {
  File("one", "x");
  ASSERT_EQ(0, Run());
  const std::string tools = base + "/tools";
  const Strings kTools = {"awk",     "bash",   "cat",    "cksum", "cmp",   "comm", "cut",
                          "date",    "diff",   "find",   "grep",  "head",  "ln",   "md5sum",
                          "mkdir",   "mkfifo", "mktemp", "nproc", "paste", "rm",   "sed",
                          "sha1sum", "sort",   "tee",    "tr",    "uniq",  "wc",   "xargs"};
  ASSERT_EQ(0, mkdir(tools.c_str(), 0755));
  for (const std::string& tool : kTools) {
    ASSERT_EQ(0, Process({"sh", "-c", "ln -s \"$(command -v " + tool + ")\" " + tools}).Wait());
  }
  // Neither openssl nor iconv; then an openssl that knows no MD4.
  const auto prepare = [&] { setenv("PATH", tools.c_str(), 1); };
  int status;
  std::string table = Verify(&status, prepare);
  EXPECT_EQ(0, status);
  EXPECT_TRUE(Contains(table, "-  not checked: no openssl\n")) << table;
  EXPECT_TRUE(Contains(table, "-  not checked: no iconv\n")) << table;
  EXPECT_EQ(13, CountRows(table, " ok\n")) << table;

  ASSERT_EQ(0, symlink("/bin/false", (tools + "/openssl").c_str()));
  table = Verify(&status, prepare);
  EXPECT_EQ(0, status);
  EXPECT_TRUE(Contains(table, "-  not checked: this openssl has no MD4\n")) << table;
  EXPECT_EQ(13, CountRows(table, " ok\n")) << table;
}

TEST_F(Census, VerifyRefusesWhatIsNoCensus) {
  const Strings kRows[] = {{}, {base + "/nowhere"}, {tree}, {tree, tree, tree}};
  for (Strings arguments : kRows) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.begin(), KEST_CENSUS_VERIFY);
    EXPECT_EQ(2, Process(arguments).Wait());
  }
}

}  // namespace
