#include "storage/Resolution.h"

namespace ZEMA {
namespace {

Resolution* current = nullptr;  // the outermost one; guarded by StorageMutex

}  // namespace

void ResolutionMemo::GetQuestions(Directory& base, const BasicArray<String>& components,
                                  BasicArray<std::size_t>& questions) {
    const auto known = bases_.Find(&base);
    std::size_t node = known != bases_.end() ? known->second : AddNode();
    if (known == bases_.end()) {
        nodes_[node].directory.Reset(&base);
        bases_.Insert(&base, node);
    }

    questions.Clear();
    questions.Reserve(components.Size());
    for (const String& component : components) {
        node = ChildOf(node, component);
        questions.PushBack(node);
    }
}

void ResolutionMemo::ForgetRefusals() {
    ++creations_;
    for (Node& node : nodes_) {
        if (node.state == State::Refused) node.state = State::Unknown;
    }
}

void ResolutionMemo::ForgetAnswers(Directory& base) {
    // What goes may follow paths itself, and so come back here: first out of the memo, then out of the world. Nodes
    // keep their places, as questions that are being asked stand in some of them.
    BasicArray<RefPointer<Directory>> leaving;
    const auto release = [&](Node& node) {
        leaving.PushBack(node.directory);
        node.directory.Reset();
    };
    for (Node& node : nodes_) {
        if (node.state != State::Answered) continue;
        node.state = State::Unknown;
        release(node);
    }
    for (auto position = bases_.begin(); position != bases_.end();) {
        if (position->first == &base) {
            ++position;
            continue;
        }
        release(nodes_[position->second]);
        position = bases_.Erase(position);
    }
}

std::size_t ResolutionMemo::AddNode() {
    nodes_.PushBack(Node());
    return nodes_.Size() - 1;
}

std::size_t ResolutionMemo::ChildOf(std::size_t parent, const String& component) {
    std::size_t child = nodes_[parent].firstChild;
    while (child != 0 && !(nodes_[child].component == component)) child = nodes_[child].nextSibling;
    if (child != 0) return child;
    child = AddNode();
    nodes_[child].component = component;
    nodes_[child].nextSibling = nodes_[parent].firstChild;
    nodes_[parent].firstChild = child;
    return child;
}

Resolution::Resolution() : outermost_(current == nullptr ? *this : *current) {
    if (current == nullptr) current = this;
    ++outermost_.nesting_;
}

Resolution::~Resolution() {
    --outermost_.nesting_;
    if (current == this) current = nullptr;
}

void Resolution::NoteCreated() {
    if (current != nullptr) current->memo_.ForgetRefusals();
}

}  // namespace ZEMA
