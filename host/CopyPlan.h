// What a copy or a move is going to do, before any of it is done.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "core/BasicSet.h"
#include "host/StorageReport.h"
#include "host/StorageTree.h"

namespace ZEMA {

struct CopyOptions {
    bool recursive = false;  // folders too
    bool force = false;      // over write-protected files too
    bool keepExisting = false;
    bool move = false;
};

// The steps from the sources to their targets, folders before what lies in them.
//
// A target that is a folder, or an archive, takes the sources under their own names. An archive that is named as the
// target of a single other archive is replaced by it. What is wrong with one source is told, and the source left out;
// what would make the command as a whole go wrong is told too, and refuses it.
class CopyPlan {
public:
    struct Step {
        StorageItem source;
        StorageItem target;
        std::size_t operand;  // the source that it belongs to
        bool rename;          // the whole thing, by the file system
    };
    struct Operand {
        StorageItem source;
        bool complete = true;  // nothing of it was left out
    };

    CopyPlan(const CopyOptions& options, StorageReport& report) : options_(options), report_(report) {}

    // False when the command is refused.
    [[nodiscard]] bool Make(const std::vector<std::string>& sources, const std::string& target);

    const std::vector<Step>& Steps() const { return steps_; }
    std::vector<Operand>& Operands() { return operands_; }

    // The archive that the target lies in, or null.
    const StorageItem* TargetArchive() const { return target_.archive ? &target_ : nullptr; }

private:
    using Names = BasicSet<String, StringCaseInsensitiveLess<String>>;

    bool FindTarget(const std::vector<std::string>& sources, const std::string& target);
    bool IsArchiveFile(const std::string& path);
    bool AddOperand(const std::string& source);
    bool AddTree(const StorageItem& source, const StorageItem& target);
    bool AddChildren(const StorageItem& folder, const StorageItem& target, std::vector<Step>& pending);
    bool RefusesPair(const StorageItem& source, const StorageItem& target);
    bool RefusesName(const StorageItem& target);
    bool RefusesSizes();
    bool RefusesSideBySide();
    bool Takes(const StorageItem& source, const StorageItem& target);
    bool CanRename(const StorageItem& source, const StorageItem& target) const;
    void LeaveOut(const StorageItem& source, const std::string& reason);
    bool Refuse(const std::string& path, const std::string& reason);

    const CopyOptions options_;
    StorageReport& report_;
    StorageTree tree_;
    StorageItem target_;
    bool intoTarget_ = false;
    std::vector<Operand> operands_;
    std::vector<Step> steps_;
    Names names_;  // of all targets
};

}  // namespace ZEMA
