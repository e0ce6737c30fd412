#include "host/workers/WorkerPool.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

namespace ZEMA::testing {

namespace {

using std::chrono::milliseconds;

// Takes as long as the request's first letter says, and answers with 64 KiB that begin with the request.
std::string AnswerAtLength(std::string_view request, const std::function<void()>&) {
    if (request.starts_with('s')) std::this_thread::sleep_for(milliseconds(700));
    if (request.starts_with('k')) raise(SIGKILL);
    std::string answer(request);
    answer.resize(std::size_t{64} << 10);
    return answer;
}

// How far ahead of the first answer the pool took tasks, and how many answers came in their order.
struct Course {
    std::size_t ahead = 0;
    std::size_t inOrder = 0;
    std::size_t lost = 0;
};

Course CourseOf(const std::string& firstTasks) {
    constexpr std::size_t kTasks = 400;
    WorkerOptions options;
    options.jobs = 2;
    options.held = std::size_t{1} << 20;
    WorkerPool pool(AnswerAtLength, options);
    const auto request = [&](std::size_t number) {
        return (number < firstTasks.size() ? firstTasks[number] : 'f') + std::to_string(number) + ";";
    };
    Course course;
    std::size_t given = 0;
    std::size_t taken = 0;
    pool.Run(
        [&](WorkerTask& task) {
            if (given == kTasks) return false;
            task = {request(given), ""};
            ++given;
            return true;
        },
        [&](const WorkerOutcome& outcome) {
            if (taken == 0) course.ahead = given;
            course.lost += outcome.loss ? 1u : 0u;
            course.inOrder += !outcome.loss && outcome.answer.starts_with(request(taken)) ? 1u : 0u;
            ++taken;
            return true;
        });
    EXPECT_EQ(taken, kTasks);
    return course;
}

}  // namespace

// 1 MiB is 16 such answers; some tasks are on their way or taken ahead.
TEST(WorkerPool, HoldsBackWhatWaitsForAnEarlierAnswer) {
    const Course course = CourseOf("s");
    EXPECT_EQ(course.inOrder, 400u);
    EXPECT_LT(course.ahead, 200u);
}

// One worker dies while the other one's answers are held back: what was behind it must not wait for them.
TEST(WorkerPool, NeverHoldsBackTheFirst) {
    const Course course = CourseOf("sffkfsffkff");
    EXPECT_EQ(course.lost, 2u);
    EXPECT_EQ(course.inOrder, 398u);
}

TEST(StuckFileSystems, AreToldApartByTheirMounts) {
    StuckFileSystems stuck;
    stuck.Note("/proc/a");
    EXPECT_FALSE(stuck.Holds("/proc/b")) << "one may have been chance";
    stuck.Note("/proc/deep/../c");
    EXPECT_TRUE(stuck.Holds("/proc/b"));
    EXPECT_FALSE(stuck.Holds("/procedure"));
    stuck.Clear("/proc/d");
    EXPECT_FALSE(stuck.Holds("/proc/b"));
}

}  // namespace ZEMA::testing
