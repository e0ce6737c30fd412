#include "storage/ResolutionMemo.h"

namespace ZEMA {

void ResolutionMemo::GetQuestions(Directory& base, const BasicArray<String>& components,
                                  BasicArray<std::size_t>& questions) {
    const auto known = bases_.Find(&base);
    std::size_t node = known != bases_.end() ? known->second : AddNode(&base);
    if (known == bases_.end()) bases_.Insert(&base, node);

    questions.Clear();
    questions.Reserve(components.Size());
    for (const String& component : components) {
        const Step step{node, component};
        const auto position = steps_.Find(step);
        node = position != steps_.end() ? position->second : AddNode(nullptr);
        if (position == steps_.end()) steps_.Insert(step, node);
        questions.PushBack(node);
    }
}

void ResolutionMemo::ForgetRefusals() {
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

std::size_t ResolutionMemo::AddNode(Directory* directory) {
    nodes_.PushBack({State::Unknown, directory});
    return nodes_.Size() - 1;
}

}  // namespace ZEMA
