#pragma once

// Runs work on other threads and hands the result to the window's thread.

#include <QFutureWatcher>
#include <QObject>
#include <QPromise>
#include <QString>
#include <QThreadPool>
#include <exception>
#include <memory>
#include <utility>

namespace Vantrel::Window {

// The result of work that may fail.
template <class T>
struct TOutcome {
  T fValue{};
  QString fError;  // empty: it went well
};

// The threads for short work: child lists, lists beside the tree. Long work, such as reading a scan file, has LongWork.
QThreadPool& ShortWork();
QThreadPool& LongWork();

// Runs pWork on the pool, then pDone on the window's thread. When pReceiver has gone by then, pDone is not called.
// Called on the window's thread.
template <class TWork, class TDone>
void RunInBackground(QThreadPool& pPool, QObject* pReceiver, TWork pWork, TDone pDone) {
  using TResult = std::invoke_result_t<TWork>;
  using TPassed = std::shared_ptr<TOutcome<TResult>>;
  auto* watcher = new QFutureWatcher<TPassed>(pReceiver);
  QObject::connect(watcher, &QFutureWatcherBase::finished, pReceiver, [watcher, done = std::move(pDone)]() mutable {
    watcher->deleteLater();
    if (watcher->future().resultCount() > 0) done(std::move(*watcher->result()));
  });
  auto promise = std::make_shared<QPromise<TPassed>>();
  watcher->setFuture(promise->future());
  pPool.start([promise, work = std::move(pWork)]() mutable {
    promise->start();
    auto outcome = std::make_shared<TOutcome<TResult>>();
    try {
      outcome->fValue = work();
    } catch (const std::exception& error) {
      outcome->fError = QString::fromUtf8(error.what());
    }
    promise->addResult(std::move(outcome));
    promise->finish();
  });
}

}  // namespace Vantrel::Window
