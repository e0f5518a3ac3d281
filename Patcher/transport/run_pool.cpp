#include "transport/run_pool.h"

#include <exception>

#include "transport/config.h"
#include "transport/debug_log.h"

namespace patcher {

bool RunPool(std::size_t itemCount, const WorkItem& work) {
  return ParallelRun(itemCount, PatchConfig::Current().connections,
                     [&work](std::size_t index, unsigned worker) {
                       try {
                         return work(index, worker);
                       } catch (const std::exception& failure) {
                         DebugLog::WriteException("a pool", failure);
                         return false;
                       }
                     });
}

}  // namespace patcher
