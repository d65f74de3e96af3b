#include "window/models/Background.h"

namespace Vantrel::Window {

namespace {

// Never destroyed: work that hangs at the end of the program, as on a dead mount, must not keep it from ending.
QThreadPool& NewPool(int pThreads) {
  auto* pool = new QThreadPool;
  pool->setMaxThreadCount(pThreads);
  return *pool;
}

}  // namespace

QThreadPool& ShortWork() {
  static QThreadPool& pool = NewPool(2);
  return pool;
}

QThreadPool& LongWork() {
  static QThreadPool& pool = NewPool(16);
  return pool;
}

}  // namespace Vantrel::Window
