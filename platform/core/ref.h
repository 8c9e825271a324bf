#pragma once

#include <memory>
#include <utility>

#include "platform/core/failure.h"

namespace orvelin {

/// A counted reference to an object, or nil with a reason. Copies share the object.
///
///     const Ref<FolderItem> child = folder->Child(name);
///     if (!child) return report(child.why());        // test for nil and log the reason
///     child->CreateAsFolder();                       // or use it: nil throws NilObjectException
///     return Failure{"Impossible de …", path, why};  // returns nil with this reason
///     return openWindow(name).as<Window1>();         // nil too if it is another kind of window
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  /// Nil, for that reason.
  Ref(Failure why) : why_(std::make_shared<const Failure>(std::move(why))) {}
  explicit Ref(std::shared_ptr<T> object) : object_(std::move(object)) {}
  template <class U>
  Ref(const Ref<U>& other) : object_(other.object_), why_(other.why_) {}

  explicit operator bool() const { return object_ != nullptr; }
  T* operator->() const { return &**this; }
  T& operator*() const {
    if (!object_) throw NilObjectException(why());
    return *object_;
  }
  bool operator==(const Ref& other) const { return object_ == other.object_; }

  /// Why this is nil: the reason that it was made with, or a general one.
  const Failure& why() const {
    static const Failure unknown{"Élément absent", "", "nil"};
    return why_ ? *why_ : unknown;
  }

  /// The same object as a U. Nil if it is not a U; a nil keeps its reason.
  template <class U>
  Ref<U> as() const {
    Ref<U> other(std::dynamic_pointer_cast<U>(object_));
    other.why_ = why_;
    return other;
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
