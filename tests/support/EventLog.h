// Objects that write down what happens to them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/Object.h"

namespace ZEMA::testing {

using EventLog = std::vector<std::string>;

// Tells of its last release and of its end. The log outlives it.
class LoggedObject : public Object {
public:
    LoggedObject(EventLog& log, std::string name) : log_(log), name_(std::move(name)) {}
    void OnLastRelease() override { Note("last release of "); }

protected:
    ~LoggedObject() override { Note("end of "); }

    void Note(const std::string& event) { log_.push_back(event + name_); }

private:
    EventLog& log_;
    std::string name_;
};

}  // namespace ZEMA::testing
