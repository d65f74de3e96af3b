#include "platform/files/Volumes.h"

#include <condition_variable>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/system/System.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

namespace {

struct TAskedVolume {
  TVolumeInformation fInformation;
  bool fExists = true;
  bool fHasAnswered = false;
};

// A thread that may never end is left alone.
struct TAskingThread {
  ~TAskingThread() {
    if (fThread.joinable()) fThread.detach();
  }
  std::thread fThread;
};

// The answers, shared with the threads that ask, so that a late thread can still store its answer.
class TAnswers {
 public:
  explicit TAnswers(std::vector<TVolumeInformation> pVolumes) : fMissing(pVolumes.size()) {
    for (TVolumeInformation& volume : pVolumes) fVolumes.push_back({std::move(volume)});
  }

  void Store(size_t pIndex, TAskedVolume pAnswer) {
    TCriticalSectionLock lock(fLock);
    fVolumes[pIndex] = std::move(pAnswer);
    fVolumes[pIndex].fHasAnswered = true;
    --fMissing;
    fChanged.notify_all();
  }

  bool HasAnswered(size_t pIndex) {
    TCriticalSectionLock lock(fLock);
    return fVolumes[pIndex].fHasAnswered;
  }

  // Returns what is known when all have answered or the time is over.
  std::vector<TVolumeInformation> WaitFor(int64_t pMilliseconds) {
    const int64_t end = TickCount64() + pMilliseconds;
    TCriticalSectionLock lock(fLock);
    for (int64_t rest = pMilliseconds; fMissing > 0 && rest > 0; rest = end - TickCount64())
      lock.WaitFor(fChanged, rest);
    std::vector<TVolumeInformation> known;
    for (const TAskedVolume& volume : fVolumes)
      if (volume.fExists) known.push_back(volume.fInformation);
    return known;
  }

 private:
  TCriticalSection fLock;
  std::condition_variable fChanged;
  std::vector<TAskedVolume> fVolumes GUARDED_BY(fLock);
  size_t fMissing GUARDED_BY(fLock);
};

}  // namespace

std::vector<TVolumeInformation> AskVolumes(std::vector<TVolumeInformation> pVolumes, TVolumeQuestion pQuestion,
                                           int64_t pMilliseconds) {
  const auto answers = std::make_shared<TAnswers>(pVolumes);
  std::vector<TAskingThread> threads(pVolumes.size());
  for (size_t i = 0; i < pVolumes.size(); ++i) {
    TAskedVolume volume{pVolumes[i]};
    try {
      threads[i].fThread = std::thread([answers, pQuestion, i, volume]() mutable {
        volume.fExists = pQuestion(volume.fInformation);
        answers->Store(i, std::move(volume));
      });
    } catch (const std::system_error&) {
      answers->Store(i, std::move(volume));  // no thread could be started, so the volume is not asked and has no answer
    }
  }
  std::vector<TVolumeInformation> known = answers->WaitFor(pMilliseconds);
  // A volume that has not answered may never do so. Threads that have answered end at once. They are joined, since the
  // threads of mingw-w64 damage the heap when one is detached while it ends.
  for (size_t i = 0; i < threads.size(); ++i)
    if (threads[i].fThread.joinable() && answers->HasAnswered(i)) threads[i].fThread.join();
  return known;
}

}  // namespace Vantrel
