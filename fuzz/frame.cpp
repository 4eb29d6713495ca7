// The shared frame of the fuzz targets; see frame.h.

#include "fuzz/frame.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "klib.h"
#include "tests/reset.h"

namespace klib::fuzz {

namespace {

// The process's own directory, removed when it ends normally.
struct Scratch {
  std::filesystem::path path;
  Scratch() {
    const std::filesystem::path memory = "/dev/shm";
    std::string pattern = (is_directory(memory) ? memory : std::filesystem::temp_directory_path()) /
                          "klib-fuzz-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path = pattern;
    std::filesystem::current_path(path);
  }
  ~Scratch() {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(path);
  }
};

void enter_scratch() { static const Scratch scratch; }

}  // namespace

int32_t Input::number() {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | byte();
  return static_cast<int32_t>(value);
}

std::string Input::text() {
  const uint8_t *stop = std::find(next_, end_, uint8_t{0});
  std::string result(next_, stop);
  next_ = stop == end_ ? end_ : stop + 1;
  return result;
}

std::string Input::rest() {
  std::string result(next_, end_);
  next_ = end_;
  return result;
}

void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

std::string scratch_file(const char *name, const std::string &content) {
  enter_scratch();
  std::ofstream file(name, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  return name;
}

std::string read_scratch(const char *name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void fresh_library() {
  enter_scratch();
  test::release_modules();
  Ksourcecode_defaults_for_parms("");
}

void declare_fonts(Input &input) {
  P_init_fonts();
  for (uint32_t lines = input.below(8); lines > 0; --lines) {
    static const char *const names[] = {"FONT=", "FONTGROUPS=", "FONT-PACKET="};
    const std::string name = names[input.below(3)];  // read before the value, on every compiler
    Kmanage_parameter_line((name + input.text()).c_str());
  }
}

}  // namespace klib::fuzz
