#pragma once

// Reference counting: IInterface, TInterfaced and TRef.

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstdint>
#include <utility>

namespace Vantrel {

// Base of all reference-counted interfaces. A new object has no reference; the first intrusive_ptr adds one. AddRef and
// Release may be called from any thread.
class IInterface {
 public:
  virtual void AddRef() const noexcept = 0;
  virtual void Release() const noexcept = 0;

  // The object as another interface that it offers, or nullptr. Adds no reference.
  template <class T>
  T* Query() {
    return dynamic_cast<T*>(this);
  }

 protected:
  virtual ~IInterface() = default;
};

inline void intrusive_ptr_add_ref(const IInterface* pObject) noexcept {
  pObject->AddRef();
}
inline void intrusive_ptr_release(const IInterface* pObject) noexcept {
  pObject->Release();
}

template <class T>
using TRef = boost::intrusive_ptr<T>;

// Implements the counting of an interface: class TThing : public TInterfaced<IThing>. The last release deletes the
// object.
template <class TInterface>
class TInterfaced : public TInterface {
 public:
  void AddRef() const noexcept final { fReferences.fetch_add(1, std::memory_order_relaxed); }
  void Release() const noexcept final {
    if (fReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 protected:
  TInterfaced() = default;
  TInterfaced(const TInterfaced&) {}  // a copy is a separate object, with no reference yet
  TInterfaced& operator=(const TInterfaced&) { return *this; }

 private:
  mutable std::atomic<int32_t> fReferences{0};
};

// Creates an object with its first reference.
template <class T, class... TArgs>
TRef<T> MakeRef(TArgs&&... pArgs) {
  return TRef<T>(new T(std::forward<TArgs>(pArgs)...));
}

}  // namespace Vantrel
