// With any allocation failing, and with all from one on, a program ends with 0 and the same bytes
// as undisturbed, or with 1, a message, no output under its final name and no temporary file. A
// quick run tries some of the allocations; with SWEEP=all in the environment it tries them all.
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
    const char *environment[] = {"LD_PRELOAD=" FAILING_MEMORY_LIBRARY, text.c_str(),
                                 "FAILING_MEMORY_COUNT=.count", nullptr};
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

  // The contents of the outputs, and of standard output.
  std::string results(const std::vector<std::string> &outputs) const {
    std::string all = read(".output");
    for (const std::string &name : outputs) all += "[" + read(name) + "]";
    return all;
  }
};

TEST_F(Memory, EveryFailureIsToldAndLeavesNothing) {
  const struct {
    std::vector<std::string> arguments, outputs;
  } jobs[] = {
      {{"kextract", "-LANGUAGE", "ENGLISH", "new.kti", "page.html", "--report", "r.json"},
       {"new.kti", "new.txt", "new.anc", "new.anx"}},
      {{"kcarry", "job.kti", "translation.txt", "alignment.txt", "new.kti"}, {"new.kti"}},
      {{"kmerge", "carried.kti", "job.anc", "new.html"}, {"new.html"}},
      {{"kshow", "carried.kti"}, {}},
  };
  const char *sweep = getenv("SWEEP");
  const bool all = sweep && std::string(sweep) == "all";
  const std::string before = files();
  for (const auto &job : jobs) {
    const std::string &program = job.arguments[0];
    ASSERT_EQ(run_failing(job.arguments, "0"), 0) << read(".errors");
    const std::string good = results(job.outputs), good_files = files();
    const int count = std::stoi(read(".count"));
    std::string none = "";
    for (size_t i = 0; i < job.outputs.size(); i++) none += "[(none)]";
    for (int n = 1; n <= count; n += all ? 1 : 1 + count / 60)
      for (const char *from_there : {"", "+"}) {
        for (const std::string &name : job.outputs) std::filesystem::remove(name);
        std::filesystem::remove("r.json");
        const int status = run_failing(job.arguments, std::to_string(n) + from_there);
        const std::string where = program + ", allocation " + std::to_string(n) + from_there;
        ASSERT_TRUE(WIFEXITED(status)) << where << ": signal " << WTERMSIG(status);
        if (WEXITSTATUS(status) == 0) {
          EXPECT_TRUE(results(job.outputs) == good) << where;
          EXPECT_EQ(files(), good_files) << where;
        } else {
          EXPECT_EQ(WEXITSTATUS(status), 1) << where << read(".errors");
          EXPECT_NE(read(".errors").find("not enough memory"), std::string::npos)
              << where << ": " << read(".errors");
          std::filesystem::remove("r.json");  // that it failed may be reported there, too
          EXPECT_EQ(files(), before) << where;
        }
      }
    for (const std::string &name : job.outputs) std::filesystem::remove(name);
    std::filesystem::remove("r.json");
  }
}

}  // namespace
}  // namespace klib::test
