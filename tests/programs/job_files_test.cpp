// No file of a user is lost, whatever the programs are asked to write, and files that do not belong
// together are refused.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "workplace.h"

namespace klib::test {
namespace {

class JobFiles : public Workplace {
 protected:
  // A job of two pages in two languages: job.*, other.*, and their translations.
  void make_jobs() {
    write("page.html", "<p>a <b>c</b> d</p>");
    write("other.html", "<p>a <i>c</i> d</p>");
    write("t.txt", "D A C\n");
    write("a.txt", "0-1 1-2 2-0\n");
    ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti page.html other.kti other.html").status,
              0);
    ASSERT_EQ(run("kcarry", "-TARGET-LANGUAGE de job.kti t.txt a.txt out.kti").status, 0);
    ASSERT_EQ(run("kmerge", "out.kti job.anc result.html").status, 0);
  }

  // The names and contents of all files.
  std::string everything() const {
    std::string all;
    std::error_code leads_nowhere;
    for (const auto &entry : std::filesystem::directory_iterator(directory_))
      if (const std::string name = entry.path().filename(); name[0] != '.')
        all += name + "[" + (entry.is_regular_file(leads_nowhere) ? read(name) : "") + "]";
    return all;
  }
};

TEST_F(JobFiles, NothingIsWrittenOverWhatIsNotTheProgramsOwn) {
  make_jobs();
  write("page.kti", "notes of mine");
  write("mine.txt", "notes of mine");
  write("own.anc", "notes of mine");
  write("result.par", "a comment\n");
  write("p.htm", "<p>x");
  std::filesystem::create_symlink("loop.par", directory_ + "/loop.par");
  write("start.par", "\x96LANGUAGE=ENGLISH\n\x96KTI-START=abc\n");
  write("corpus.target", "notes of mine");
  std::filesystem::create_hard_link(directory_ + "/page.html", directory_ + "/hard.html");
  std::filesystem::create_symlink("t.txt", directory_ + "/link.kti");
  std::filesystem::create_directory(directory_ + "/sub");
  static const struct {
    const char *program, *arguments, *message;
  } rows[] = {
      {"kextract", "p.htm p.htm", "p.htm: is the same file as p.htm"},
      {"kextract", "-LANGUAGE ENGLISH p.htm page.html", "p.htm: the name of a sentence file must"},
      {"kextract", "t.kti t.txt", "t.txt: is the same file as t.txt"},
      {"kextract", "page.kti page.html", "page.kti: exists and is no sentence file"},
      {"kextract", "mine.kti page.html", "mine.txt: exists and belongs to no sentence file"},
      {"kextract", "own.kti page.html", "own.anc: exists and is no anchor file"},
      {"kextract", "link.kti t.txt", "link.kti: is the same file as t.txt"},
      {"kextract", "-LOG-PATHNAME job.log --report job.log job.kti page.html", "job.log: is the"},
      {"kextract", "-LOG-PATHNAME sub/../job.log --report ./job.log job.kti page.html", "is the"},
      {"kextract", "--report page.html job.kti page.html", "page.html: is the same file as"},
      {"kcarry", "job.kti t.txt a.txt t.txt", "t.txt: is the same file as t.txt"},
      {"kcarry", "job.kti t.txt a.txt ./job.kti", "./job.kti: is the same file as job.kti"},
      {"kcarry", "job.kti t.txt a.txt new.txt", "new.txt: the name of a sentence file must"},
      {"kcarry", "job.kti t.txt a.txt page.kti", "page.kti: exists and is no sentence file"},
      {"kmerge", "out.kti job.anc job.anc", "job.anc: is the same file as job.anc"},
      {"kmerge", "out.kti job.anc job.anx", "job.anx: is the same file as job.anx"},
      {"kmerge", "out.kti job.anc --report out.kti x.html", "out.kti: is the same file as"},
      {"kshow", "out.kti --report out.kti", "out.kti: is the same file as out.kti"},
      {"kalign", "- - x", "standard input: cannot be read twice"},
      {"kmerge", "out.kti job.anc - --report -", "standard output: cannot be written twice"},
      {"kextract", "loop.kti page.html", "loop.par: cannot be read: Too many levels of symbolic"},
      {"kextract", "start.kti page.html", "start.par:2: KTI-START: 'abc' is not a whole number"},
      {"kshow", "out.kti --report page.html", "page.html: exists and is no report for scripts"},
      {"kshow", "--html job.kti out.kti", "job.kti: exists and is no report of sentences"},
      {"kshow", "--html page.html out.kti", "page.html: exists and is no report of sentences"},
      {"kshow", "--html r.html --report r.html out.kti", "r.html: is the same file as r.html"},
      {"kalign", "job.txt t.txt page.html", "page.html: exists and is no alignment"},
      {"kalign", "job.txt t.txt a.txt job.txt t.txt t.txt", "t.txt: is the same file as t.txt"},
      {"kalign", "--save page.html job.txt t.txt x", "page.html: exists and is no model"},
      {"kalign", "--save a.txt job.txt t.txt a.txt", "a.txt: is the same file as a.txt"},
      {"kalign", "--tokens corpus job.txt t.txt x", "corpus.target: exists and belongs to no ALI"},
  };
  const std::string before = everything();
  for (const auto &row : rows) {
    const Outcome outcome = run(row.program, row.arguments);
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_NE(outcome.errors.find(row.message), std::string::npos) << outcome.errors;
    EXPECT_TRUE(everything() == before) << row.program << " " << row.arguments;
  }
  EXPECT_EQ(run("kmerge", "out.kti job.anc mine.txt").status, 0);  // any regular file
  for (int i = 0; i < 2; i++) {  // what the programs have made, they replace
    EXPECT_EQ(run("kalign", "--save m --tokens k --report r job.txt t.txt a.txt").errors, "");
    EXPECT_EQ(run("kshow", "--html r.html --report r out.kti").errors, "");
  }
}

TEST_F(JobFiles, OnlyFilesOfOneJobGoTogether) {
  make_jobs();
  const std::string out = read("out.kti"), anchors = read("job.anc"), sentences = read("job.kti");
  write("old.anc", "klib-page 1 ASCII\n=<p>");
  write("old.anx", std::string("\x12\0\0\0\x16\0\0\0", 8));
  write("old.kti", coded("{90}0 A{91}\n"));
  write("new.kti", "klib-sentences 3" + sentences.substr(16));
  write("damaged.kti", "klib-sentences 2 12 ENGLISH\n");
  write("odd.kti", "klib-sentences 2 0123456789abcdef \x1B[31m\n");
  static const struct {
    const char *program, *arguments, *message;
  } rows[] = {
      {"kmerge", "out.kti other.anc x.html", "out.kti:1: does not belong to other.anc"},
      {"kmerge", "out.kti old.anc x.html", "old.anc:1: has the format of version 1"},
      {"kmerge", "old.kti job.anc x.html", "old.kti:1: the first line is not a header"},
      {"kmerge", "-LANGUAGE fr out.kti job.anc x.html",
       "out.kti:1: is in GERMAN, but the language given is FRENCH"},
      {"kcarry", "new.kti t.txt a.txt x.kti", "new.kti:1: has the format of version 3"},
      {"kcarry", "damaged.kti t.txt a.txt x.kti", "damaged.kti:1: the first line is not a header"},
      {"kcarry", "odd.kti t.txt a.txt x.kti", "odd.kti:1: the first line is not a header"},
      {"kalign", "--model /dev/zero job.txt t.txt x.kti", "/dev/zero: is no model"},
      {"kcarry", "-LANGUAGE de job.kti t.txt a.txt x.kti",
       "job.kti:1: is in ENGLISH, but the language given is GERMAN"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = run(row.program, row.arguments);
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_NE(outcome.errors.find(row.message), std::string::npos) << outcome.errors;
    EXPECT_EQ(read("x.html") + read("x.kti"), "(none)(none)") << row.arguments;
  }
  EXPECT_EQ(run("kcarry", "-LANGUAGE en -TARGET-LANGUAGE de job.kti t.txt a.txt again.kti").status,
            0);
  EXPECT_EQ(read("again.kti"), out);
  EXPECT_EQ(run("kextract", "-LANGUAGE ENGLISH again.kti page.html").status, 0);
  EXPECT_EQ(read("again.kti") + read("again.anc"), sentences + anchors);
}

TEST_F(JobFiles, PermissionsAndLongNames) {
  make_jobs();
  const std::string result = directory_ + "/result.html";
  chmod(result.c_str(), 0640);
  EXPECT_EQ(run("kmerge", "job.kti job.anc result.html").status, 0);
  struct stat status = {};
  stat(result.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  chmod(result.c_str(), 0444);
  EXPECT_EQ(run("kmerge", "out.kti job.anc result.html").errors,
            "result.html: is write-protected: it is not replaced\n");
  EXPECT_EQ(read("result.html"), "<p>a <b>c</b> d</p>");
  const std::string name(251, 'n');
  EXPECT_EQ(run("kextract", name + ".kti page.html").status, 0);
  EXPECT_NE(read(name + ".anc"), "(none)");
  EXPECT_NE(run("kextract", std::string(5000, 'n') + ".kti page.html").errors.find("too many"),
            std::string::npos);
}

// Each program reads from a pipe that does not end, or from an engine that does not answer, when
// the signal comes: at the latest when its temporary files are there.
TEST_F(JobFiles, SignalsLeaveNothingBehind) {
  make_jobs();
  std::filesystem::current_path(directory_);
  ASSERT_EQ(mkfifo("slow.kti", 0600), 0);
  ASSERT_EQ(mkfifo("slow.txt", 0600), 0);
  const int sentences = open("slow.kti", O_RDWR | O_CLOEXEC);
  const int lines = open("slow.txt", O_RDWR | O_CLOEXEC);
  const std::string header = read("job.kti").substr(0, read("job.kti").find('\n') + 1);
  const std::string before = files();
  static const struct {
    std::vector<const char *> arguments;
    const char *temporary;  // a part of a name that is there when the program waits
  } rows[] = {
      {{"kextract", "--report", "r.json", "new.kti", "slow.txt"}, "r.json."},
      {{"kcarry", "job.kti", "slow.txt", "a.txt", "x.kti"}, "x.kti."},
      {{"kmerge", "--report", "r.json", "slow.kti", "job.anc", "x.html"}, "x.html."},
      {{"kalign", "--tokens", "k", "job.txt", "slow.txt", "x.al"}, "k.target."},
      {{"kshow", "--html", "x.html", "slow.kti"}, "x.html."},
      {{"ktranslate", "--engine", "sleep 100", "page.html", "x.html"}, "ktranslate."},
  };
  setenv("TMPDIR", ".", 1);
  for (const auto &[arguments, temporary] : rows)
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      ASSERT_EQ(::write(sentences, header.data(), header.size()),
                static_cast<ssize_t>(header.size()));
      const pid_t child = fork();
      if (child == 0) {
        std::vector<char *> argv;
        for (const char *argument : arguments) argv.push_back(const_cast<char *>(argument));
        argv.push_back(nullptr);
        freopen("/dev/null", "w", stderr);
        execv((std::string(PROGRAMS "/") + arguments[0]).c_str(), argv.data());
        _exit(127);
      }
      while (files().find(temporary) == std::string::npos) usleep(1000);
      kill(child, signal);
      int status = 0;
      waitpid(child, &status, 0);
      EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << arguments[0];
      EXPECT_EQ(files(), before) << arguments[0];
    }
  unsetenv("TMPDIR");
  close(sentences), close(lines);
  std::filesystem::current_path("/");
}

}  // namespace
}  // namespace klib::test
