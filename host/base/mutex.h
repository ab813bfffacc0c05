// A lockable object and its scoped guard.
#pragma once

#include <mutex>

#include "host/base/host_export.h"

namespace host {

/// A non-recursive mutex with virtual lock operations, so that classes that
/// carry a lock of their own can derive from it. Thread-safe by definition.
class HOST_API MutexObject {
 public:
  MutexObject() = default;
  MutexObject(const MutexObject&) = delete;
  MutexObject& operator=(const MutexObject&) = delete;
  virtual ~MutexObject();
  virtual void Lock();
  virtual void Unlock();

 private:
  std::mutex mutex_;
};

/// Locks a MutexObject for the lifetime of the guard.
class MutexLock {
 public:
  explicit MutexLock(MutexObject& m) : m_(m) { m_.Lock(); }
  ~MutexLock() { m_.Unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  MutexObject& m_;
};

}  // namespace host
