// Translations that an engine has made before, in a file.
//
// The file is an SQLite database with one table: engine, text -> answer, run. Runs may share it:
// writers wait for each other, and what a run that was interrupted has put there stays.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace klib::programs {

class Cache {
 public:
  // Opens the file, or makes it. fail() when it cannot be read or is something else: a file of
  // another kind is never written to. `engine` is the key's first part: answers of one engine are
  // never another's.
  Cache(const std::string &name, std::string engine);
  ~Cache();  // keeps what was put
  Cache(const Cache &) = delete;
  Cache &operator=(const Cache &) = delete;

  // Whether the text was translated before; then `answer` is what was put.
  bool find(std::string_view text, std::string &answer);
  // Remembers an answer. Written in groups, at the latest after a second and with the object's end.
  void put(std::string_view text, std::string_view answer);
  // Writes what was put.
  void save();
  // Removes what was put through this object: the engine's answers turned out to be out of step.
  void forget_run();

 private:
  [[noreturn]] void fail_with(const char *what);
  void execute(const char *sql);
  sqlite3_stmt *prepare(const char *sql);
  void close();

  std::string name_, engine_;
  sqlite3 *store_ = nullptr;
  sqlite3_stmt *find_ = nullptr, *put_ = nullptr;
  bool is_writing_ = false;    // a transaction is open
  int64_t writing_since_ = 0;  // milliseconds of a steady clock
  int64_t unsaved_ = 0;
  int64_t run_ = 0;  // a number of this object's own
};

}  // namespace klib::programs
