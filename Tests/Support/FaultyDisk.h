#pragma once

#include <sqlite3.h>

#include <map>

namespace trovi::tests {

/// While the object lives, one kind of SQLite's disk operations in this process can be made to
/// fail. Nothing is synced to the real disk. One object at a time, on one thread.
class FaultyDisk {
 public:
  enum class Operation { none, read, write, sync };
  struct Fault {
    Operation operation = Operation::none;
    int code = SQLITE_OK;  ///< what SQLite gets
    bool lasting = false;  ///< all later ones fail too
    int after = 0;         ///< how many operations of this kind succeed first
  };

  FaultyDisk() {
    vfs_.zName = "faulty";
    vfs_.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
      const int code = self->real_->xOpen(self->real_, name, file, flags, given);
      if (file->pMethods != nullptr) file->pMethods = self->watched(file->pMethods);
      return code;
    };
    self = this;
    sqlite3_vfs_register(&vfs_, 1);
  }
  ~FaultyDisk() {
    sqlite3_vfs_unregister(&vfs_);
    sqlite3_vfs_register(real_, 1);
    self = nullptr;
  }
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  /// Replaces the fault; one without an operation repairs the disk.
  void breakWith(const Fault& fault) { fault_ = fault; }
  /// Whether the fault has occurred.
  bool hasBroken() const { return fault_.after < 0; }

 private:
  struct Methods : sqlite3_io_methods {
    const sqlite3_io_methods* real;
  };

  /// The same methods, with ours in front of those that can fail.
  const Methods* watched(const sqlite3_io_methods* real) {
    Methods& methods = methods_.try_emplace(real, Methods{*real, real}).first->second;
    methods.xRead = [](sqlite3_file* file, void* bytes, int size, sqlite3_int64 at) {
      const int code = self->codeOf(Operation::read);
      return code != SQLITE_OK ? code : realOf(file)->xRead(file, bytes, size, at);
    };
    methods.xWrite = [](sqlite3_file* file, const void* bytes, int size, sqlite3_int64 at) {
      const int code = self->codeOf(Operation::write);
      return code != SQLITE_OK ? code : realOf(file)->xWrite(file, bytes, size, at);
    };
    methods.xSync = [](sqlite3_file*, int) { return self->codeOf(Operation::sync); };
    return &methods;
  }
  static const sqlite3_io_methods* realOf(sqlite3_file* file) {
    return static_cast<const Methods*>(file->pMethods)->real;
  }
  int codeOf(Operation operation) {
    if (operation != fault_.operation || fault_.after-- > 0) return SQLITE_OK;
    return fault_.lasting || fault_.after == -1 ? fault_.code : SQLITE_OK;
  }

  inline static FaultyDisk* self = nullptr;
  sqlite3_vfs* real_ = sqlite3_vfs_find(nullptr);
  sqlite3_vfs vfs_ = *real_;
  std::map<const sqlite3_io_methods*, Methods> methods_;
  Fault fault_;
};

}  // namespace trovi::tests
