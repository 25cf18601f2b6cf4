#include "cli/pool.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

#include "cli/interrupt.h"
#include "cli/memory_need.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

constexpr std::uint64_t kMemoryWhereNobodySays = std::uint64_t{1} << 30;  // bytes
constexpr int kPipeBytes = 1 << 20;

template <typename Number>
requires std::is_arithmetic_v<Number>
void put(std::string& bytes, Number value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void put(std::string& bytes, const std::optional<std::string>& text) {
    put(bytes, text ? static_cast<std::int64_t>(text->size()) : std::int64_t{-1});
    if (text) bytes += *text;
}

void put(std::string& bytes, const std::optional<PixelSize>& size) {
    put(bytes, size ? size->width : 0);
    put(bytes, size ? size->height : 0);
}

/// Takes values off the front of bytes; `ok` goes false when they end too early.
struct Unpacker {
    std::string_view bytes;
    bool ok = true;

    template <typename Number>
    Number number() {
        Number value{};
        ok = ok && bytes.size() >= sizeof value;
        if (!ok) return value;
        std::memcpy(&value, bytes.data(), sizeof value);
        bytes.remove_prefix(sizeof value);
        return value;
    }
    std::optional<std::string> text() {
        const auto length = number<std::int64_t>();
        if (!ok || length < 0) return std::nullopt;
        ok = static_cast<std::uint64_t>(length) <= bytes.size();
        if (!ok) return std::nullopt;
        const std::string_view taken = bytes.substr(0, static_cast<std::size_t>(length));
        bytes.remove_prefix(taken.size());
        return std::string(taken);
    }
    std::optional<PixelSize> size() {
        const int width = number<int>();
        const int height = number<int>();
        return width > 0 && height > 0 ? std::optional(PixelSize{width, height}) : std::nullopt;
    }
};

struct Worker {
    pid_t process = 0;
    int jobs = -1;     // the parent's end: numbers of jobs to do
    int reports = -1;  // the parent's end: their reports, each after its length
    std::optional<std::size_t> job;
    std::uint64_t memory = 0;  // what its job was counted with
    std::string received;
};

/// Before a report: how many bytes it has, and how many the job made, which follow it.
struct ReportHead {
    std::uint64_t reportBytes = 0;
    std::uint64_t madeBytes = 0;
};

bool writeAll(int descriptor, const void* bytes, std::size_t count) {
    return bool(writeDescriptor(descriptor, {static_cast<const std::uint8_t*>(bytes), count}));
}

bool readExactly(int descriptor, void* bytes, std::size_t count) {
    auto* at = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t got = ::read(descriptor, at, count);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        at += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

/// What a worker process does until there are no more jobs or nobody listens.
[[noreturn]] void work(int jobs, int reports, const PoolCallbacks& callbacks) {
    std::uint64_t job = 0;
    while (readExactly(jobs, &job, sizeof job)) {
        const JobReport report = callbacks.run(static_cast<std::size_t>(job));
        const std::string packed = packReport(report);
        const ReportHead head{packed.size(), report.made.size()};
        const UninterruptedScope whole;
        const bool told = writeAll(reports, &head, sizeof head) &&
                          writeAll(reports, packed.data(), packed.size()) &&
                          writeAll(reports, report.made.data(), report.made.size());
        if (!told) break;
    }
    ::_exit(0);
}

std::string causeOfDeath(int status) {
    if (WIFSIGNALED(status)) {
        return filled("The process that rendered it was ended by signal %1",
                      {std::to_string(WTERMSIG(status))});
    }
    return marked("The process that rendered it ended too early");
}

class Pool {
  public:
    using Lost = std::function<JobReport(std::size_t, const std::string&)>;
    Pool(std::size_t count, const PoolShare& share, const PoolCallbacks& callbacks,
         const Lost& lost)
        : count_(count), share_(share), callbacks_(callbacks), lost_(lost) {}
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() {
        for (Worker& worker : workers_) dismiss(worker);
    }

    bool start() {
        workers_.resize(static_cast<std::size_t>(share_.workers));
        return std::all_of(workers_.begin(), workers_.end(),
                           [this](Worker& worker) { return hire(worker); });
    }

    /// Until all is reported, it is enough, or a signal came.
    void run() {
        giveAll();
        while (reported_ < count_ && !isOver()) {
            std::vector<pollfd> waiting;
            for (const Worker& worker : workers_) {
                // poll passes over what has no descriptor.
                waiting.push_back({worker.job ? worker.reports : -1, POLLIN, 0});
            }
            if (pollOrSignal(waiting.data(), waiting.size()) < 0) continue;
            for (std::size_t i = 0; i < waiting.size(); ++i) {
                if (waiting[i].revents != 0) listen(workers_[i]);
            }
        }
        if (!isOver()) return;
        for (const Worker& worker : workers_) {
            if (worker.process > 0) ::kill(worker.process, SIGTERM);
        }
        if (interruptingSignal() != 0) reportFinished();
    }

  private:
    bool hire(Worker& worker) {
        int jobs[2];
        int reports[2];
        if (::pipe2(jobs, O_CLOEXEC) != 0) return false;
        if (::pipe2(reports, O_CLOEXEC) != 0) {
            ::close(jobs[0]);
            ::close(jobs[1]);
            return false;
        }
        // Fewer changes between the two where a job makes much.
        ::fcntl(reports[0], F_SETPIPE_SZ, kPipeBytes);
        worker = {::fork(), jobs[1], reports[0], {}, 0, {}};
        if (worker.process == 0) {
            // The ends of the others must not live on here, or their pipes would never end.
            for (const Worker& other : workers_) {
                if (other.jobs >= 0) ::close(other.jobs);
                if (other.reports >= 0) ::close(other.reports);
            }
            resetInterruptsInChild();
            work(jobs[0], reports[1], callbacks_);
        }
        ::close(jobs[0]);
        ::close(reports[1]);
        if (worker.process < 0) dismiss(worker);
        return worker.process > 0;
    }

    /// Ends a worker by ending its list of jobs; gives how it ended.
    static int dismiss(Worker& worker) {
        if (worker.jobs >= 0) ::close(std::exchange(worker.jobs, -1));
        if (worker.reports >= 0) ::close(std::exchange(worker.reports, -1));
        int status = 0;
        if (worker.process > 0) {
            while (::waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
            }
        }
        worker.process = 0;
        return status;
    }

    bool isOver() const {
        return interruptingSignal() != 0 || (callbacks_.isEnough && callbacks_.isEnough());
    }

    /// The next jobs, in their order, to all who have none, as far as the share goes.
    void giveAll() {
        for (Worker& worker : workers_) {
            if (worker.job || worker.process <= 0) continue;
            if (next_ >= count_ || next_ - reported_ > share_.ahead || isOver()) return;
            if (!nextMemory_) nextMemory_ = callbacks_.memory ? callbacks_.memory(next_) : 0;
            if (!hasRoomFor(*nextMemory_)) return;
            worker.memory = *std::exchange(nextMemory_, std::nullopt);
            worker.job = next_++;
            const std::uint64_t message = *worker.job;
            // A worker that cannot be told has died; its pipe's end tells so.
            writeAll(worker.jobs, &message, sizeof message);
        }
    }

    bool hasRoomFor(std::uint64_t memory) const {
        std::uint64_t left = share_.memoryBytes;
        bool isAlone = true;
        for (const Worker& worker : workers_) {
            if (!worker.job) continue;
            isAlone = false;
            left -= std::min(left, worker.memory);
        }
        return isAlone || memory <= left;
    }

    /// What a worker sends next, as read gives it; an interruption of the wait is tried again.
    static ssize_t receive(Worker& worker) {
        char buffer[1 << 16];
        ssize_t got = 0;
        do got = ::read(worker.reports, buffer, sizeof buffer);
        while (got < 0 && errno == EINTR);
        if (got > 0) worker.received.append(buffer, static_cast<std::size_t>(got));
        return got;
    }

    /// The report of the worker's job once all of it is there; the worker has no job then.
    std::optional<std::pair<std::size_t, JobReport>> takeReport(Worker& worker) const {
        ReportHead head;
        std::string_view received = worker.received;
        if (!worker.job || received.size() < sizeof head) return std::nullopt;
        std::memcpy(&head, received.data(), sizeof head);
        received.remove_prefix(sizeof head);
        if (received.size() < head.reportBytes + head.madeBytes) return std::nullopt;
        std::optional<JobReport> report = unpackReport(received.substr(0, head.reportBytes));
        received.remove_prefix(head.reportBytes);
        if (report) report->made.assign(received.begin(), received.end());
        const std::size_t job = *std::exchange(worker.job, std::nullopt);
        worker.received = {};
        if (!report) report = lost_(job, marked("The report of its process was damaged"));
        return std::pair(job, *std::move(report));
    }

    void listen(Worker& worker) {
        if (receive(worker) <= 0) {
            replaceDead(worker);
            return;
        }
        if (auto report = takeReport(worker)) {
            finish(report->first, std::move(report->second));
            giveAll();
        }
    }

    /// After an interruption: all that the workers still send before they end, and what was done
    /// before an earlier job was.
    void reportFinished() {
        for (Worker& worker : workers_) {
            if (worker.process <= 0) continue;
            ::close(std::exchange(worker.jobs, -1));  // one without a job has nothing to wait for
            while (receive(worker) > 0) {
            }
            if (auto report = takeReport(worker)) early_.insert(*std::move(report));
        }
        for (const auto& [job, report] : early_) callbacks_.report(report);
    }

    void replaceDead(Worker& worker) {
        const std::size_t job = *worker.job;
        const std::string cause = causeOfDeath(dismiss(worker));
        if (interruptingSignal() != 0) return;  // it was interrupted as well
        worker = {};
        finish(job, lost_(job, cause));
        if (next_ < count_) hire(worker);
        giveAll();
        // Without any worker left, the rest is done here.
        const bool idle = std::none_of(workers_.begin(), workers_.end(),
                                       [](const Worker& each) { return each.job.has_value(); });
        while (idle && next_ < count_ && !isOver()) {
            const std::size_t own = next_++;
            finish(own, callbacks_.run(own));
        }
    }

    void finish(std::size_t job, JobReport report) {
        early_.emplace(job, std::move(report));
        callbacks_.progress(reported_ + early_.size());
        for (auto first = early_.begin(); first != early_.end() && first->first == reported_;
             first = early_.begin()) {
            callbacks_.report(first->second);
            early_.erase(first);
            ++reported_;
        }
    }

    std::size_t count_;
    const PoolShare share_;
    const PoolCallbacks& callbacks_;
    const Lost& lost_;
    std::vector<Worker> workers_;
    std::size_t next_ = 0;
    std::optional<std::uint64_t> nextMemory_;  // of that job, once it is known
    std::size_t reported_ = 0;
    std::map<std::size_t, JobReport> early_;  // done before an earlier one
};

void runHere(std::size_t count, const PoolCallbacks& callbacks) {
    const auto isEnough = [&] { return callbacks.isEnough && callbacks.isEnough(); };
    for (std::size_t job = 0; job < count && interruptingSignal() == 0 && !isEnough(); ++job) {
        callbacks.progress(job);
        callbacks.report(callbacks.run(job));
    }
}

}  // namespace

int workersFor(const MachineShare& share) {
    const std::uint64_t memory = share.freeMemory.value_or(kMemoryWhereNobodySays);
    return static_cast<int>(std::clamp<std::uint64_t>(memory / kBytesAWorker, 1, share.processors));
}

std::uint64_t memoryFor(const MachineShare& share) {
    return share.freeMemory.value_or(kMemoryWhereNobodySays) / 4 * 3;
}

void runPool(std::size_t count, const PoolShare& share, const PoolCallbacks& callbacks,
             const std::function<JobReport(std::size_t, const std::string&)>& lost) {
    PoolShare used = share;
    if (static_cast<std::size_t>(used.workers) > count) used.workers = static_cast<int>(count);
    if (used.workers < 2) {
        runHere(count, callbacks);
        return;
    }
    const UninterruptedScope endWorkersFirst;
    Pool pool(count, used, callbacks, lost);
    if (pool.start()) {
        pool.run();
    } else {
        runHere(count, callbacks);  // no more processes are to be had
    }
}

std::string packReport(const JobReport& report) {
    std::string bytes;
    put(bytes, std::optional(report.input));
    put(bytes, report.output);
    put(bytes, report.inputSize);
    put(bytes, report.outputSize);
    put(bytes, report.milliseconds);
    put(bytes, report.error);
    return bytes;
}

std::optional<JobReport> unpackReport(std::string_view bytes) {
    Unpacker unpacker{bytes};
    JobReport report;
    report.input = unpacker.text().value_or("");
    report.output = unpacker.text();
    report.inputSize = unpacker.size();
    report.outputSize = unpacker.size();
    report.milliseconds = unpacker.number<double>();
    report.error = unpacker.text();
    return unpacker.ok && unpacker.bytes.empty() ? std::optional(report) : std::nullopt;
}

}  // namespace skarnel::cli
