// With any allocation failing, and with all from one on, a program ends with 0 and the same bytes
// as undisturbed, or with 1, a message, no output under its final name and no temporary file; of
// several pages, those that were published before stay, whole. A quick run tries some of the
// allocations; with SWEEP=all in the environment it tries them all, a part of the programs if the
// environment also divides the tests (GTEST_TOTAL_SHARDS, GTEST_SHARD_INDEX).
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <vector>

#include "workplace.h"

namespace klib::test {
namespace {

class Memory : public Workplace {
 protected:
  void SetUp() override {
    Workplace::SetUp();
    std::filesystem::copy(EXAMPLE "/page.html", directory_);
    ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti page.html").status, 0);
    // Every sentence is its own translation, with its first two words exchanged.
    std::istringstream text(read("job.txt"));
    std::string alignment;
    for (std::string line; std::getline(text, line);) {
      const auto words = 1 + std::count(line.begin(), line.end(), ' ');
      for (int64_t i = 0; i < words; i++)
        alignment += std::to_string(i) + "-" + std::to_string(words > 1 && i < 2 ? 1 - i : i) + " ";
      alignment += "\n";
    }
    write("translation.txt", read("job.txt"));
    write("alignment.txt", alignment);
    ASSERT_EQ(run("kcarry", "job.kti translation.txt alignment.txt carried.kti").status, 0);
    // The aligner goes over its lines again and again: a few of every kind are enough for it.
    write("few.html",
          "<p>The <b>old</b> house. The new house.</p><p>\xE6\x9D\xB1\xE4\xBA\xAC"
          "\xE3\x81\xAB house.</p>\n");
    ASSERT_EQ(run("kextract", "-LANGUAGE ENGLISH few.kti few.html").status, 0);
    write("few.tra", "Das alte Haus.\nDas neue Haus.\nHaus \xE6\x9D\xB1\xE4\xBA\xAC.\n");
    std::filesystem::current_path(directory_);
  }
  void TearDown() override {
    std::filesystem::current_path("/");
    Workplace::TearDown();
  }

  // Runs a program without a shell; FAILING_MEMORY is `failing`.
  int run_failing(const std::vector<std::string> &arguments, const std::string &failing) const {
    std::vector<char *> argv;
    for (const std::string &argument : arguments)
      argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    const std::string text = "FAILING_MEMORY=" + failing;
    const char *environment[] = {"LD_PRELOAD=" FAILING_MEMORY_LIBRARY,
                                 text.c_str(),
                                 "FAILING_MEMORY_COUNT=.count",
                                 "TMPDIR=.",
                                 "PATH=/usr/bin:/bin",
                                 nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, ".output", flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, ".errors", flags, 0600);
    const std::string program = std::string(PROGRAMS "/") + arguments[0];
    pid_t child = 0;
    const int error = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(),
                                  const_cast<char **>(environment));
    posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    if (error == 0) waitpid(child, &status, 0);
    return status;
  }

  // The contents of standard output and of the outputs.
  std::vector<std::string> results(const std::vector<std::string> &outputs) const {
    std::vector<std::string> all = {read(".output")};
    for (const std::string &name : outputs) all.push_back(read(name));
    return all;
  }

  // Sweeps a program that writes `outputs`: all allocations, or about `samples` of them. What of
  // independent outputs is there after a failure must be whole.
  void sweep(const std::vector<std::string> &arguments, const std::vector<std::string> &outputs,
             int samples, bool are_independent = false) {
    const char *sweep = getenv("SWEEP");
    const bool all = sweep && std::string(sweep) == "all";
    const std::string before = files();
    const auto remove_outputs = [&] {
      for (const std::string &name : outputs) std::filesystem::remove(name);
      // That a run failed may be reported, and what an engine has answered be kept.
      for (const char *name : {"r.json", ".cache", ".cache-journal"}) std::filesystem::remove(name);
      std::error_code is_not_empty;
      std::filesystem::remove("out", is_not_empty);
    };
    ASSERT_EQ(run_failing(arguments, "0"), 0) << read(".errors");
    const std::vector<std::string> good = results(outputs);
    const std::string good_files = files();
    const int count = std::stoi(read(".count"));
    for (int n = 1; n <= count; n += all ? 1 : 1 + count / samples)
      for (const char *from_there : {"", "+"}) {
        remove_outputs();
        const int status = run_failing(arguments, std::to_string(n) + from_there);
        std::string where;
        for (const std::string &argument : arguments) where += argument + " ";
        where += "with allocation " + std::to_string(n) + from_there + " of " +
                 std::to_string(count) + ": " + read(".errors");
        ASSERT_TRUE(WIFEXITED(status)) << where << ": signal " << WTERMSIG(status);
        if (WEXITSTATUS(status) == 0) {
          EXPECT_TRUE(results(outputs) == good) << where;
          EXPECT_EQ(files(), good_files) << where;
        } else {
          EXPECT_EQ(WEXITSTATUS(status), 1) << where;
          EXPECT_NE(read(".errors").find("not enough memory"), std::string::npos) << where;
          const std::vector<std::string> left = results(outputs);
          for (size_t i = 1; i < left.size(); i++)
            EXPECT_TRUE(left[i] == "(none)" || (are_independent && left[i] == good[i])) << where;
          remove_outputs();
          EXPECT_EQ(files(), before) << where;
        }
      }
    remove_outputs();
  }
};

TEST_F(Memory, Kextract) {
  sweep({"kextract", "-LANGUAGE", "ENGLISH", "new.kti", "page.html", "--report", "r.json"},
        {"new.kti", "new.txt", "new.anc", "new.anx"}, 60);
}

TEST_F(Memory, Kcarry) {
  sweep({"kcarry", "job.kti", "translation.txt", "alignment.txt", "new.kti"}, {"new.kti"}, 60);
}

TEST_F(Memory, KcarryAligns) {
  sweep({"kcarry", "--align", "few.kti", "few.tra", "new.kti"}, {"new.kti"}, 12);
}

TEST_F(Memory, Kmerge) {
  sweep({"kmerge", "carried.kti", "job.anc", "new.html"}, {"new.html"}, 60);
}

TEST_F(Memory, Kshow) { sweep({"kshow", "carried.kti"}, {}, 60); }

TEST_F(Memory, KshowInHtml) {
  sweep({"kshow", "--html", "new.html", "job.kti", "--result", "carried.kti"}, {"new.html"}, 60);
}

TEST_F(Memory, Kalign) { sweep({"kalign", "few.txt", "few.tra", "new.al"}, {"new.al"}, 12); }

TEST_F(Memory, KalignWithModel) {
  ASSERT_EQ(run("kalign", "--save first.model few.txt few.tra few.al").status, 0);
  sweep({"kalign", "--model", "first.model", "--save", "new.model", "--tokens", "new", "few.txt",
         "few.tra", "new.al"},
        {"new.al", "new.model", "new.source", "new.target"}, 12);
}

TEST_F(Memory, KtranslateCopies) {
  sweep({"ktranslate", "-LANGUAGE", "ENGLISH", "--copy", "few.html", "new.html"}, {"new.html"}, 8);
}

TEST_F(Memory, KtranslateTwoPagesAtATime) {
  write("one.html", "<p>One <b>two</b>.</p>\n");
  sweep({"ktranslate", "--copy", "--jobs", "2", "--out-dir", "out", "few.html", "one.html"},
        {"out/few.html", "out/one.html"}, 8, true);
}

TEST_F(Memory, KtranslateAsksAnEngine) {
  write("small.html", "<p>Eins <b>zwei</b>. Drei.</p>\n");
  sweep({"ktranslate", "--engine", "sed -u s/e/i/", "--cache", ".cache", "small.html", "new.html"},
        {"new.html"}, 8);
}

}  // namespace
}  // namespace klib::test
