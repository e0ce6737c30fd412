#include "registry/AbstractObjectFactory.h"

#include <cstring>

namespace ZEMA {

AbstractObjectFactory::~AbstractObjectFactory() {
    if (mutex_ != nullptr) mutex_->DropShare();
}

Object* AbstractObjectFactory::Create(const std::type_info* type, ObjectFactoryArgs* args) {
    const auto position = byType_.Find(type);
    if (position != byType_.end()) return position->second->Create(args);
    // A factory may register further ones while it is asked: positions of the set stay good when something is inserted.
    for (const Candidate& candidate : inAskingOrder_) {
        Object* const object = candidate.factory->Create(args);
        if (object != nullptr) return object;
    }
    return nullptr;
}

bool AbstractObjectFactory::Add(const std::type_info* concrete, SpecificObjectFactory* factory) {
    if (!byType_.Insert(concrete, factory)) return false;
    inAskingOrder_.Insert({concrete, factory});
    return true;
}

bool AbstractObjectFactory::AskedBefore::operator()(const Candidate& a, const Candidate& b) const {
    if (a.factory->Rank() != b.factory->Rank()) return a.factory->Rank() < b.factory->Rank();
    return std::strcmp(a.concrete->name(), b.concrete->name()) < 0;
}

}  // namespace ZEMA
