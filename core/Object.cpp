#include "core/Object.h"

namespace ZEMA {

void Object::OnLastRelease() {}

void Object::AddRef() {
    referenceCount.fetch_add(1);
}

void Object::Release() {
    if (referenceCount.fetch_sub(1) > 1) return;
    // Before the destructor, since there the object is no longer of the class that knows what to detach.
    OnLastRelease();
    delete this;
}

}  // namespace ZEMA
