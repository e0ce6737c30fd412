#include "core/Object.h"

namespace ZEMA {

void Object::OnLastRelease() {}

void Object::AddRef() {
    referenceCount.fetch_add(1);
}

void Object::Release() {
    if (referenceCount.fetch_sub(1) > 1) return;
    OnLastRelease();
    delete this;
}

}  // namespace ZEMA
