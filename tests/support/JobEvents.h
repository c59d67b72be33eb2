// Records the signals of one run of a background job (progress, done, canceled) as text, in order.
#pragma once

#include <QObject>

#include <algorithm>
#include <string>
#include <vector>

namespace testsupport {

// events reads like {"progress 0", "progress 50", "done 1"}; "done 0" and "canceled" end other runs.
struct JobEvents {
    template <class Job>
    explicit JobEvents(Job& job) {
        QObject::connect(&job, &Job::progress, [this](int p) { events.push_back("progress " + std::to_string(p)); });
        QObject::connect(&job, &Job::done, [this](bool ok) { events.push_back(ok ? "done 1" : "done 0"); });
        QObject::connect(&job, &Job::canceled, [this] { events.push_back("canceled"); });
    }
    JobEvents(const JobEvents&) = delete;

    // The events other than progress.
    std::vector<std::string> endings() const {
        std::vector<std::string> result;
        std::copy_if(events.begin(), events.end(), std::back_inserter(result),
                     [](const std::string& e) { return e.rfind("progress", 0) != 0; });
        return result;
    }

    std::vector<std::string> events;
};

} // namespace testsupport
