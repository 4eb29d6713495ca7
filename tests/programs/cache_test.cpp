// The cache of translations: what it finds, how runs share it, and what may happen to the file.
#include "programs/engine/cache.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "programs/common/program.h"

namespace klib::programs {
namespace {

class CacheFile : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "cache_test.XXXXXX";
    directory_ = mkdtemp(name.data());
    name_ = directory_ + "/cache";
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  std::string find(const std::string &engine, const std::string &text) const {
    std::string answer;
    return Cache(name_, engine).find(text, answer) ? "<" + answer + ">" : "none";
  }
  std::string directory_, name_;
};

TEST_F(CacheFile, KeyedByEngineAndText) {
  const std::string odd("a\0b\xFF", 4);
  {
    Cache cache(name_, "one");
    cache.put("text", "answer");
    cache.put(odd, odd);
    cache.put("", "");
    cache.put("text", "later answer");
  }
  EXPECT_EQ(find("one", "text"), "<later answer>");
  EXPECT_EQ(find("one", odd), "<" + odd + ">");
  EXPECT_EQ(find("one", ""), "<>");
  EXPECT_EQ(find("one", "Text"), "none");
  EXPECT_EQ(find("two", "text"), "none");
  EXPECT_EQ(find("onet", "ext"), "none");
}

TEST_F(CacheFile, ForgetsARun) {
  Cache(name_, "engine").put("old", "x");
  {
    Cache cache(name_, "engine");
    for (int i = 0; i < 700; i++) cache.put(std::to_string(i), "x");
    cache.forget_run();
    cache.put("new", "x");
  }
  EXPECT_EQ(find("engine", "old") + find("engine", "5") + find("engine", "new"), "<x>none<x>");
}

// Processes that write at once, one of which is killed halfway.
TEST_F(CacheFile, IsShared) {
  constexpr int writers = 4, texts = 1000;
  pid_t processes[writers];
  for (int w = 0; w < writers; w++) {
    processes[w] = fork();
    if (processes[w] != 0) continue;
    Cache cache(name_, "engine");
    for (int i = 0; i < texts; i++) {
      cache.put(std::to_string(w) + " " + std::to_string(i), "x");
      if (i % 100 == 99) cache.save();
      if (w == 0 && i == 550) raise(SIGKILL);
    }
    cache.save();
    _exit(0);
  }
  for (const pid_t process : processes) {
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(status == 0 || process == processes[0]) << status;
  }
  EXPECT_EQ(find("engine", "0 499"), "<x>");
  EXPECT_EQ(find("engine", "0 545"), "none") << "a group is there as a whole or not at all";
  for (int w = 1; w < writers; w++)
    EXPECT_EQ(find("engine", std::to_string(w) + " 999"), "<x>") << w;
}

// A file of another kind is refused and stays as it is.
TEST_F(CacheFile, OtherFiles) {
  std::ofstream(name_) << "<p>A page.</p>";
  EXPECT_THROW(Cache(name_, "engine"), Failed);
  std::string content;
  std::getline(std::ifstream(name_), content);
  EXPECT_EQ(content, "<p>A page.</p>");
  EXPECT_THROW(Cache(directory_, "engine"), Failed);
  EXPECT_THROW(Cache(directory_ + "/none/cache", "engine"), Failed);
  EXPECT_THROW(Cache("/dev/null", "engine"), Failed);
}

TEST_F(CacheFile, DamagedFile) {
  {
    Cache cache(name_, "engine");
    for (int i = 0; i < 2000; i++) cache.put(std::to_string(i), std::string(100, 'x'));
  }
  std::fstream file(name_, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(4096);
  file << std::string(100000, '\xEE');
  file.close();
  EXPECT_THROW(find("engine", "1000"), Failed);
}

}  // namespace
}  // namespace klib::programs
