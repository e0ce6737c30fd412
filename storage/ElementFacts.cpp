#include "storage/ElementFacts.h"

#include <algorithm>

namespace ZEMA {

bool ElementFacts::GetIdentity(const String&, ElementIdentity*) {
    return false;
}

bool ElementFacts::GetEnclosing(BasicArray<ElementIdentity>*) {
    return false;
}

bool GetIdentity(Directory& directory, ElementIdentity* identity) {
    auto* const facts = dynamic_cast<ElementFacts*>(&directory);
    return facts != nullptr && facts->GetIdentity(String(), identity);
}

// Climbs to the nearest directory that can be told from all others. What lies below it is told apart by names.
Place::Place(Directory& directory) : base_(&directory) {
    for (;; base_ = base_->Parent()) {
        hasIdentity_ = GetIdentity(*base_, &identity_);
        if (hasIdentity_ || base_->Parent() == nullptr) return;
        names_.PushBack(base_->Name());
    }
}

BasicArray<ElementIdentity> Place::Enclosing() const {
    BasicArray<ElementIdentity> enclosing;
    if (hasIdentity_) dynamic_cast<ElementFacts&>(*base_).GetEnclosing(&enclosing);
    return enclosing;
}

bool Place::SharesBase(const Place& other) const {
    return base_ == other.base_ || (hasIdentity_ && other.hasIdentity_ && identity_ == other.identity_);
}

bool Place::StartsWith(const Place& other) const {
    const std::size_t own = names_.Size();
    const std::size_t others = other.names_.Size();
    if (own < others) return false;
    return std::equal(other.names_.begin(), other.names_.end(), names_.begin() + (own - others),
                      [](const String& a, const String& b) { return a.EqualsNoCaseAt(0, npos, b); });
}

bool Place::Is(const Place& other) const {
    return SharesBase(other) && names_.Size() == other.names_.Size() && StartsWith(other);
}

bool Place::IsInside(const Place& outer) const {
    if (SharesBase(outer)) return StartsWith(outer);
    if (!outer.hasIdentity_ || !outer.names_.Empty()) return false;
    const BasicArray<ElementIdentity> enclosing = Enclosing();
    return std::find(enclosing.begin(), enclosing.end(), outer.identity_) != enclosing.end();
}

}  // namespace ZEMA
