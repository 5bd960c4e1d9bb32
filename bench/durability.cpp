// Calls that return once their work is on the disk, beside a database's commit of the same size.

#include <filesystem/zip_archive.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>

#include "benchmarks.h"
#include "process.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

constexpr int kRows = 100;

std::string keyOf(int number) { return "row" + std::to_string(number); }

const std::vector<unsigned char>& row() {
  static const std::string text = sourceText(10'000);
  static const std::vector<unsigned char> bytes(text.begin(), text.end());
  return bytes;
}

// An archive of some rows, open for writing.
ZipArchive archiveOfRows(const Workspace& workspace) {
  ZipArchive archive;
  require(archive.create(workspace.fresh("rows.zip").c_str(), 0) != 0, "create");
  for (int i = 0; i < kRows; ++i) {
    require(archive.insert(row(), keyOf(i), "", 0) != 0, "insert");
  }
  return archive;
}

// A database of the same rows, with SQLite's defaults: a rollback journal and synchronous=FULL.
class Database {
 public:
  explicit Database(const Workspace& workspace) {
    require(sqlite3_open(workspace.fresh("rows.db").c_str(), &database_) == SQLITE_OK,
            "sqlite3_open");
    execute("CREATE TABLE t(k TEXT PRIMARY KEY, v BLOB)");
    execute("BEGIN");
    for (int i = 0; i < kRows; ++i) execute("INSERT INTO t VALUES(?, ?)", i);
    execute("COMMIT");
  }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() { sqlite3_close(database_); }

  // The statement's parameters are the key and the content of a row.
  void execute(const char* statement, int number = 0) {
    sqlite3_stmt* prepared = nullptr;
    const std::string key = keyOf(number);
    require(sqlite3_prepare_v2(database_, statement, -1, &prepared, nullptr) == SQLITE_OK,
            statement);
    sqlite3_bind_text(prepared, 1, key.c_str(), -1, SQLITE_STATIC);
    // Without effect where the statement has no such parameter.
    sqlite3_bind_blob(prepared, 2, row().data(), static_cast<int>(row().size()), SQLITE_STATIC);
    const int result = sqlite3_step(prepared);
    sqlite3_finalize(prepared);
    require(result == SQLITE_DONE, statement);
  }

 private:
  sqlite3* database_ = nullptr;
};

// Changes of some rows, one call after the other, beside as many of SQLite's commits.
template <typename Change>
Operation changes(const Workspace& workspace, const char* name, const char* statement, int firstRow,
                  Change change) {
  constexpr int kCalls = 40;
  return {.name = name,
          .target = 1.5,
          .ours =
              [=, &workspace](int eighths) {
                ZipArchive archive = archiveOfRows(workspace);
                return timed([&] {
                  for (int i = 0; i < kCalls * eighths / 8; ++i) {
                    require(change(archive, keyOf(firstRow + i)) == 1, name);
                  }
                });
              },
          .peers = {{"SQLite",
                     [=, &workspace] {
                       Database database(workspace);
                       return timed([&] {
                         for (int i = 0; i < kCalls; ++i) database.execute(statement, firstRow + i);
                       });
                     }}},
          .note = {}};
}

// `cp` returns before its copies are on the disk, and `sync` makes all of them durable at once.
Operation copyOver(const Workspace& workspace) {
  // A copy of the tree, all of it on the disk.
  const auto existing = [&workspace](int eighths) {
    std::string target = workspace.emptyFolder("over");
    fs::copy(workspace.tree(eighths), target, fs::copy_options::recursive);
    ::sync();
    return target;
  };
  return {.name = "CopyContent over 20,000 existing files",
          .target = 1.5,
          .ours =
              [=, &workspace](int eighths) {
                return runProgram({BENCH_PROGRAMS "/bench-ours", "copy",
                                   workspace.tree(eighths) + '\\', existing(eighths) + '\\'});
              },
          .peers = {{"cp -r and sync",
                     [=, &workspace] {
                       return runProgram({"sh", "-c", "cp -r \"$0/.\" \"$1\" && sync -f \"$1\"",
                                          workspace.tree(8), existing(8)});
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> durabilityOperations(const Workspace& workspace) {
  return {
      changes(workspace, "40 inserts of 10 KB, each durable", "INSERT INTO t VALUES(?, ?)", kRows,
              [](ZipArchive& archive, const std::string& key) {
                return archive.insert(row(), key, "", 0);
              }),
      changes(workspace, "40 replacements of 10 KB, each durable",
              "INSERT OR REPLACE INTO t VALUES(?, ?)", 0,
              [](ZipArchive& archive, const std::string& key) {
                return archive.insert(row(), key, "", 1);
              }),
      changes(
          workspace, "40 removals of 10 KB, each durable", "DELETE FROM t WHERE k = ?", 0,
          [](ZipArchive& archive, const std::string& key) { return archive.remove(key.c_str()); }),
      copyOver(workspace)};
}

}  // namespace bench
