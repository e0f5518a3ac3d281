#pragma once

#include <utility>

namespace platform {

/// Owns one reference to a COM object.
template <typename Interface>
class ComReference {
 public:
  ComReference() = default;
  /// Takes ownership of the caller's reference.
  static ComReference Adopt(Interface* object) { return ComReference(object); }
  /// Adds a reference to an object that the caller does not own.
  static ComReference Share(Interface* object) {
    if (object != nullptr) object->AddRef();
    return ComReference(object);
  }
  ~ComReference() {
    if (object_ != nullptr) object_->Release();
  }
  ComReference(ComReference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComReference& operator=(ComReference&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  /// For a function that returns a reference through a pointer. Use only while this is empty.
  Interface** Receive() { return &object_; }

 private:
  explicit ComReference(Interface* object) : object_(object) {}
  Interface* object_ = nullptr;
};

}  // namespace platform
