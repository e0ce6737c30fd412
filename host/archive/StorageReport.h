// What goes wrong in a command over files and archives.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace ZEMA {

// Hands failures on as they come, as "cannot VERB 'PATH': REASON", and remembers that there were any.
class StorageReport {
public:
    using Tell = std::function<void(const std::string& message)>;

    StorageReport(std::string verb, Tell tell) : verb_(std::move(verb)), tell_(std::move(tell)) {}

    void Fail(const std::string& path, const std::string& reason) {
        failed_ = true;
        tell_("cannot " + verb_ + " '" + path + "': " + reason);
    }
    // Tells something that is no failure by itself.
    void Note(const std::string& message) const { tell_(message); }

    bool Failed() const { return failed_; }

private:
    std::string verb_;
    Tell tell_;
    bool failed_ = false;
};

}  // namespace ZEMA
