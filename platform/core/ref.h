#pragma once

#include <memory>
#include <utility>

#include "platform/core/failure.h"

namespace orvelin {

/// A counted reference that may be nil. Copying shares the object, assigning releases the one held
/// before; using nil throws NilObjectException with the reason that nil was made with.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  /// Nil, and why.
  Ref(Failure why) : why_(std::make_shared<const Failure>(std::move(why))) {}
  explicit Ref(std::shared_ptr<T> object) : object_(std::move(object)) {}
  template <class U>
  Ref(const Ref<U>& other) : object_(other.object_), why_(other.why_) {}

  explicit operator bool() const { return object_ != nullptr; }
  T* operator->() const { return &**this; }
  T& operator*() const {
    if (!object_) throw NilObjectException(why_ ? *why_ : Failure{"Élément absent", "", "nil"});
    return *object_;
  }
  bool operator==(const Ref& other) const { return object_ == other.object_; }

  /// Why this is nil; null where no reason was given or this is not nil.
  const Failure* why() const { return why_.get(); }

  /// The same object as a U, nil when it is none.
  template <class U>
  Ref<U> as() const {
    return Ref<U>(std::dynamic_pointer_cast<U>(object_));
  }

 private:
  template <class U>
  friend class Ref;
  std::shared_ptr<T> object_;
  std::shared_ptr<const Failure> why_;
};

template <class T, class... Args>
Ref<T> makeRef(Args&&... args) {
  return Ref<T>(std::make_shared<T>(std::forward<Args>(args)...));
}

}  // namespace orvelin
