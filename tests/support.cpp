// The shared parts of all tests; see support.h.

#include "tests/support.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "platform/platform.h"

namespace klib::test {

namespace {

struct Allocations {
  int64_t blocks_in_use = 0;
  int64_t until_failure = 0;  // the allocation that brings this to 0 fails
  bool failed = false;
};
Allocations allocations;

bool fails_now() {
  if (allocations.until_failure == 0 || --allocations.until_failure != 0) return false;
  return allocations.failed = true;
}

void *counted(void *block) {
  if (block != nullptr) ++allocations.blocks_in_use;
  return block;
}

void *allocate(size_t size) { return fails_now() ? nullptr : counted(std::malloc(size)); }

void *allocate_zeroed(size_t elements, size_t size) {
  return fails_now() ? nullptr : counted(std::calloc(elements, size));
}

void release(void *block) {
  if (block != nullptr) --allocations.blocks_in_use;
  std::free(block);
}

void *reallocate(void *block, size_t size) {
  if (fails_now()) return nullptr;
  if (block == nullptr) return counted(std::realloc(nullptr, size));
  if (size == 0) {
    release(block);
    return nullptr;
  }
  // Always moved, and the old block is overwritten, so that reading it is noticed.
  void *moved = std::malloc(size);
  const size_t old_size = malloc_usable_size(block);
  std::memcpy(moved, block, std::min(old_size, size));
  std::memset(block, 0xDD, old_size);
  std::free(block);
  return moved;
}

}  // namespace

std::string bytes(std::string_view notation) {
  std::string result;
  for (size_t i = 0; i < notation.size(); ++i) {
    if (notation[i] == '{') {
      result += static_cast<char>(std::stoi(std::string(notation.substr(i + 1, 2)), nullptr, 16));
      i += 3;
    } else {
      result += notation[i];
    }
  }
  return result;
}

std::string show(std::string_view text) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte > 0x7E || c == '{' || c == '}')
      result += {'{', digits[byte / 16], digits[byte % 16], '}'};
    else
      result += c;
  }
  return result;
}

std::string show(const char *text) {
  return text != nullptr ? show(std::string_view(text)) : "(null)";
}

std::string take(char *text) {
  const std::string shown = show(static_cast<const char *>(text));
  Kfree(text);
  return shown;
}

void reset_all() {
  release_modules();
  platform::reset();
  platform::calls.allocate = allocate;
  platform::calls.allocate_zeroed = allocate_zeroed;
  platform::calls.reallocate = reallocate;
  platform::calls.release = release;
  allocations = Allocations{};
}

int32_t &number_of(const char *name) { return kparm[parameters::parameter_number(name) - 1]; }

char *&text_of(const char *name) {
  return skparm[parameters::parameter_number(name) - parameters::numeric_count - 1];
}

int64_t blocks_in_use() { return allocations.blocks_in_use; }

std::string read_file(const std::string &name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void write_file(const std::string &name, std::string_view content) {
  std::ofstream file(name, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  ASSERT_TRUE(file.good()) << name;
}

void Library::SetUp() {
  reset_all();
  previous_directory_ = std::filesystem::current_path();
  std::string pattern = std::filesystem::temp_directory_path() / "klib-test-XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  directory_ = std::filesystem::canonical(pattern);
  std::filesystem::current_path(directory_);
  Ksourcecode_defaults_for_parms("c:\\kavro\\");
  Kstart_logging_file((directory_ + "/test.log").c_str());
}

void Library::TearDown() {
  release_modules();
  EXPECT_EQ(blocks_in_use(), 0) << "blocks that were not released";
  reset_all();
  std::filesystem::current_path(previous_directory_);
  std::filesystem::remove_all(directory_);
}

std::string Library::log() {
  static const std::regex stamp(R"((^|\n)\d\d/\d\d/\d\d \d\d:\d\d:\d\d )");
  const std::string name = directory_ + "/test.log";
  const std::string lines = read_file(name).substr(log_read_);
  log_read_ += lines.size();
  Kstart_logging_file(name.c_str());
  return std::regex_replace(lines, stamp, "$1");
}

FailingAllocation::FailingAllocation(int n) {
  allocations.failed = false;
  allocations.until_failure = n;
}
FailingAllocation::~FailingAllocation() { allocations.until_failure = 0; }
bool FailingAllocation::happened() const { return allocations.failed; }

}  // namespace klib::test
