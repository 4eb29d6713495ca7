// An SQLite file in its rollback mode, which also works where memory cannot be shared, such as on a
// network's file system. A mark in the header distinguishes the file from other databases.
#include "programs/engine/cache.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>

#include "programs/common/program.h"
#include "programs/system/exhaustion.h"

namespace klib::programs {
namespace {

constexpr int application_id = 0x6B6C6962;  // "klib"
constexpr int wait_for_others = 60000;      // milliseconds
constexpr int64_t longest_group = 1000, most_in_group = 500;

int64_t now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void bind_bytes(sqlite3_stmt *statement, int place, std::string_view bytes) {
  sqlite3_bind_blob64(statement, place, bytes.empty() ? "" : bytes.data(), bytes.size(),
                      SQLITE_STATIC);
}

// Whether the file is empty, not there, or says in its header that it is ours.
bool may_be_ours(const std::string &name) {
  struct stat status;
  if (stat(name.c_str(), &status) != 0 || (S_ISREG(status.st_mode) && status.st_size == 0))
    return true;
  if (!S_ISREG(status.st_mode)) return false;
  char header[100] = {};
  std::ifstream(name, std::ios::binary).read(header, sizeof header);
  constexpr char ours[] = {0x6B, 0x6C, 0x69, 0x62};
  return memcmp(header, "SQLite format 3", 16) == 0 && memcmp(header + 68, ours, sizeof ours) == 0;
}

}  // namespace

Cache::Cache(const std::string &name, std::string engine)
    : name_(name), engine_(std::move(engine)) {
  sqlite3_randomness(sizeof run_, &run_);
  if (!may_be_ours(name))
    fail(name.c_str(), 0, "is no cache of translations: name another file, or remove this one");
  // A name that begins with "file:" is a name, too.
  const std::string path = name.starts_with('/') ? name : "./" + name;
  try {
    if (sqlite3_open_v2(path.c_str(), &store_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr) != SQLITE_OK)
      fail_with("cannot be opened");
    sqlite3_busy_timeout(store_, wait_for_others);
    // Also takes the lock for the time in which another run may be making the table.
    execute("BEGIN IMMEDIATE");
    execute(("PRAGMA application_id = " + std::to_string(application_id)).c_str());
    execute(
        "CREATE TABLE IF NOT EXISTS translation (engine BLOB NOT NULL, text BLOB NOT NULL, "
        "answer BLOB NOT NULL, run INTEGER NOT NULL, PRIMARY KEY (engine, text)) WITHOUT ROWID");
    execute("COMMIT");
    execute("PRAGMA synchronous = NORMAL");
    find_ = prepare("SELECT answer FROM translation WHERE engine = ?1 AND text = ?2");
    put_ = prepare("INSERT OR REPLACE INTO translation VALUES (?1, ?2, ?3, ?4)");
  } catch (...) {
    close();
    throw;
  }
}

Cache::~Cache() {
  if (is_writing_) sqlite3_exec(store_, "COMMIT", nullptr, nullptr, nullptr);
  close();
}

void Cache::close() {
  sqlite3_finalize(find_);
  sqlite3_finalize(put_);
  sqlite3_close(store_);
}

void Cache::fail_with(const char *what) {
  const bool lacks_memory = !store_ || sqlite3_errcode(store_) == SQLITE_NOMEM;
  const std::string reason = lacks_memory ? error_text(ENOMEM) : sqlite3_errmsg(store_);
  fail(name_.c_str(), 0, "%s: %s", what, reason.c_str());
}

void Cache::execute(const char *sql) {
  if (sqlite3_exec(store_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    fail_with("cannot be used");
}

sqlite3_stmt *Cache::prepare(const char *sql) {
  sqlite3_stmt *statement = nullptr;
  if (sqlite3_prepare_v2(store_, sql, -1, &statement, nullptr) != SQLITE_OK)
    fail_with("cannot be used");
  return statement;
}

bool Cache::find(std::string_view text, std::string &answer) {
  bind_bytes(find_, 1, engine_);
  bind_bytes(find_, 2, text);
  const int result = sqlite3_step(find_);
  if (result == SQLITE_ROW)
    answer.assign(static_cast<const char *>(sqlite3_column_blob(find_, 0)),
                  static_cast<size_t>(sqlite3_column_bytes(find_, 0)));
  sqlite3_reset(find_);
  if (result != SQLITE_ROW && result != SQLITE_DONE) fail_with("cannot be read");
  return result == SQLITE_ROW;
}

void Cache::put(std::string_view text, std::string_view answer) {
  if (!is_writing_) {
    execute("BEGIN IMMEDIATE");
    is_writing_ = true;
    writing_since_ = now();
  }
  bind_bytes(put_, 1, engine_);
  bind_bytes(put_, 2, text);
  bind_bytes(put_, 3, answer);
  sqlite3_bind_int64(put_, 4, run_);
  const int result = sqlite3_step(put_);
  sqlite3_reset(put_);
  if (result != SQLITE_DONE) fail_with("cannot be written");
  if (++unsaved_ >= most_in_group || now() - writing_since_ >= longest_group) save();
}

void Cache::save() {
  if (!is_writing_) return;
  execute("COMMIT");
  is_writing_ = false;
  unsaved_ = 0;
}
void Cache::forget_run() {
  save();
  execute(("DELETE FROM translation WHERE run = " + std::to_string(run_)).c_str());
}

}  // namespace klib::programs
