/// @file TPXBasCamIOThreadTask.h
/// The thread task that runs the cache manager's purging.
#ifndef TPXBASCAMIOTHREADTASK_H
#define TPXBASCAMIOTHREADTASK_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiThreadTask.h"

class TPXBasCamCacheManager;

/// The purge thread's task: Run ignores its argument and runs the manager's PurgeTask until
/// TPXBasCamCacheManager::StopPurgeTask. The library starts no thread; a host runs it:
///
///   TPXBasCamCacheManager& cm = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Instance();
///   TPXBasCamIOThreadTask task(&cm);
///   std::thread purger([&] { task.Run(0); });
///   ...
///   cm.StopPurgeTask();
///   purger.join();
class KLDTPXBAS_API TPXBasCamIOThreadTask : public TPXBasAtiThreadTask {
 public:
  /// A task that purges for manager, which must outlive it.
  explicit TPXBasCamIOThreadTask(TPXBasCamCacheManager* manager) : m_manager(manager) {}
  ~TPXBasCamIOThreadTask() override;
  /// Runs manager's PurgeTask in the calling thread until StopPurgeTask; the argument is
  /// ignored.
  void Run(int) override;

 private:
  TPXBasCamCacheManager* m_manager;
};

#endif  // TPXBASCAMIOTHREADTASK_H
