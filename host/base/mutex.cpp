#include "host/base/mutex.h"

namespace host {

MutexObject::~MutexObject() = default;

void MutexObject::Lock() { mutex_.lock(); }

void MutexObject::Unlock() { mutex_.unlock(); }

}  // namespace host
