#pragma once

#include <stdexcept>

namespace patcher {

/// Why a publication cannot go on, as a sentence for the publisher.
class PublishError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace patcher
