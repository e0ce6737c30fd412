// What a copy or a move is going to do, before any of it is done.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "core/BasicSet.h"
#include "host/archive/ArchiveCommands.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/StorageTree.h"

namespace ZEMA {

// The steps from the sources to their targets, folders before what lies in them.
//
// A target that is a folder, or an archive, takes the sources under their own names. What is wrong with one source is
// told, and the source left out; what would make the command as a whole go wrong is told too, and refuses it.
class CopyPlan {
public:
    // Something in the tree, or a name that is free, without its path.
    struct Place {
        RefPointer<ZipTreeNode> node;
        StorageFacts facts;
    };
    // Paths are not kept: those of a deep tree would take far more memory than the tree.
    struct Step {
        Place source;
        Place target;
        std::size_t operand;  // the source that it belongs to
        std::size_t folder;   // the step of the folder around it, or kNoStep for the operand itself
        std::string name;     // in that folder
        bool rename = false;  // the member, or all of the folder, within its archive
    };
    // One of the sources as the user named it, and where it goes.
    struct Operand {
        StorageItem source;
        StorageItem target;
        bool complete = true;  // nothing of it was left out
    };
    static constexpr std::size_t kNoStep = static_cast<std::size_t>(-1);

    // The edits have begun: of the archive of the target and, where the sources are moved, of theirs.
    CopyPlan(const CopyOptions& options, ArchiveEdits& edits, StorageReport& report)
        : options_(options), edits_(edits), report_(report) {}

    // False when the command is refused.
    [[nodiscard]] bool Make(const std::vector<std::string>& sources, const std::string& target);

    const std::vector<Step>& Steps() const { return steps_; }
    StorageItem SourceOf(const Step& step) const;
    StorageItem TargetOf(const Step& step) const;
    std::vector<Operand>& Operands() { return operands_; }
    const StorageItem& Target() const { return target_; }

private:
    using Names = BasicSet<String, StringCaseInsensitiveLess<String>>;
    // A folder or file whose step is still to come.
    struct Pending {
        StorageItem source;
        StorageItem target;
        std::size_t folder;
        std::string name;  // empty where the source's contents go into the target by themselves
    };

    bool FindTarget(const std::string& target);
    bool AddOperand(const std::string& source);
    bool AddSource(const StorageItem& source);
    bool AddTree(const Pending& top);
    bool AddRename(const Pending& top);
    void AddChildren(const Pending& folder, std::vector<Pending>& pending);
    void AddStep(const Pending& pending, bool rename);
    void LeaveOutHidden(const StorageItem& source);
    void LeaveOutBelowFile(const StorageItem& source);
    bool IsFilled(const StorageItem& folder) const;
    StorageItem ItemBelow(const StorageItem& top, const Step& step, const Place& place) const;
    bool RefusesPair(const StorageItem& source, const StorageItem& target);
    bool RefusesLength(const Pending& pending);
    bool RefusesName(const Pending& pending);
    bool RefusesSizes();
    bool RefusesSideBySide();
    bool Takes(const StorageItem& source, const StorageItem& target);
    Failure WhyNotNamed(const StorageItem& source) const;
    Failure WhyNot(const StorageItem& source, const StorageItem& target);
    Failure WhyNotReplaced(const StorageItem& target);
    void LeaveOut(const StorageItem& source, const std::string& reason);
    bool Refuse(const std::string& path, const std::string& reason);

    const CopyOptions options_;
    ArchiveEdits& edits_;
    StorageReport& report_;
    StorageTree tree_;
    StorageItem target_;
    bool intoTarget_ = false;
    bool hasSeveralSources_ = false;
    std::vector<Operand> operands_;
    std::vector<Step> steps_;
    std::map<std::size_t, Names> names_;  // of all targets, by the step of their folder
};

}  // namespace ZEMA
