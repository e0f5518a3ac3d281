#include "store_session.h"

#include <system_error>

#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

/// The lock needs an existing folder.
const std::filesystem::path& MakeRoot(const ContentStore& store) {
  store.MakeRoot();
  return store.Root();
}

}  // namespace

StoreSession::StoreSession(const ContentStore& store) : store_(store), lock_(MakeRoot(store)) {
  if (!lock_.TakeWithin(std::chrono::milliseconds(0))) {
    throw PublishError("another patch-publish is using " + platform::Utf8FromPath(store.Root()) +
                       "; nothing was changed: start again when it has ended");
  }
  store_.OpenForWriting();
}

StoreSession::~StoreSession() { store_.RemoveWorkFolder(); }

void RequireStore(const ContentStore& store) {
  std::error_code error;
  if (!std::filesystem::is_directory(store.Root(), error)) {
    throw PublishError("nothing is published: there is no " + platform::Utf8FromPath(store.Root()));
  }
}

}  // namespace patcher::publisher
