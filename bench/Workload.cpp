// Runs the variants of a workload side by side, and prints their times and ratios.
#include "Workload.h"

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

int const ROUNDS = 31;
double const BATCH_SECONDS = 0.001;

std::vector<Comparison>& comparisons() {
    static std::vector<Comparison> all;
    return all;
}

double secondsOf(Work const& work, int count) {
    auto const start = std::chrono::steady_clock::now();
    work(count);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// So many times that the clock and the call do not count.
int batchOf(Work const& work) {
    int count = 1;
    while (secondsOf(work, count) < BATCH_SECONDS) {
        count *= 2;
    }
    return count;
}

double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<long>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Nanoseconds of one piece of work, by variant and round.
class Rounds {
  public:
    explicit Rounds(std::vector<Work> works) : works_(std::move(works)), times_(works_.size()) {
        for (Work const& work : works_) {
            work(1);  // warm
            batches_.push_back(batchOf(work));
        }
    }

    void run(benchmark::State& state) {
        bool backwards = false;
        for (auto _ : state) {
            double total = 0.0;
            for (size_t i = 0; i < works_.size(); ++i) {
                total += runOne(backwards ? works_.size() - 1 - i : i);
            }
            state.SetIterationTime(total);
            backwards = !backwards;
        }
    }

    double time(size_t variant) const { return median(times_[variant]); }

    double ratio(size_t variant, size_t other) const {
        std::vector<double> ratios;
        for (size_t round = 0; round < times_[variant].size(); ++round) {
            ratios.push_back(times_[variant][round] / times_[other][round]);
        }
        return median(ratios);
    }

  private:
    double runOne(size_t variant) {
        double const seconds = secondsOf(works_[variant], batches_[variant]);
        times_[variant].push_back(seconds * 1e9 / batches_[variant]);
        return seconds;
    }

    std::vector<Work> works_;
    std::vector<int> batches_;
    std::vector<std::vector<double>> times_;
};

std::string timeText(double nanoseconds) {
    char text[32];
    if (nanoseconds < 1e4) {
        snprintf(text, sizeof text, "%.1f ns", nanoseconds);
    } else {
        snprintf(text, sizeof text, "%.1f us", nanoseconds / 1e3);
    }
    return text;
}

// ", 1.08 of the limit 37.1 ns (goal 1.3)"; notes whether the goal is met.
std::string verdict(double ratio, std::string const& what, double goal, bool& met) {
    char text[160];
    if (goal > 0.0) {
        snprintf(text, sizeof text, ", %.2f of %s (goal %.2f)", ratio, what.c_str(), goal);
        met = met && ratio <= goal;
    } else {
        snprintf(text, sizeof text, ", %.2f of %s", ratio, what.c_str());
    }
    return text;
}

// The label of the finished benchmark is its line.
void report(benchmark::State& state, std::string const& line, bool met) {
    state.SetLabel(line + (met ? "" : "  NOT MET"));
    state.counters["met"] = met ? 1.0 : 0.0;
}

void compare(benchmark::State& state, Comparison const& comparison) {
    std::vector<Work> works = {comparison.product};
    if (comparison.limit) {
        works.push_back(comparison.limit);
    }
    size_t const firstPeer = works.size();
    for (Variant const& peer : comparison.peers) {
        works.push_back(peer.work);
    }
    Rounds rounds(works);
    rounds.run(state);

    bool met = true;
    std::string line = timeText(rounds.time(0));
    if (comparison.goalInNanoseconds > 0.0) {
        line += " (goal " + timeText(comparison.goalInNanoseconds) + ")";
        met = rounds.time(0) <= comparison.goalInNanoseconds;
    }
    if (comparison.limit) {
        line += verdict(rounds.ratio(0, 1), "limit " + timeText(rounds.time(1)),
                        comparison.goalOfLimit, met);
    }
    size_t best = firstPeer;
    for (size_t peer = firstPeer; peer < works.size(); ++peer) {
        best = rounds.time(peer) < rounds.time(best) ? peer : best;
    }
    if (best < works.size()) {
        line +=
            verdict(rounds.ratio(0, best),
                    comparison.peers[best - firstPeer].name + (" " + timeText(rounds.time(best))),
                    comparison.goalOfPeer, met);
    }
    report(state, line, met);
}

void grow(benchmark::State& state, Growth const& growth) {
    std::vector<Work> works;
    for (Growth::Size const& size : growth.sizes) {
        works.push_back(size.work);
    }
    Rounds rounds(works);
    rounds.run(state);

    std::string line;
    for (size_t i = 0; i < works.size(); ++i) {
        line += (i > 0 ? ", " : "") + timeText(rounds.time(i));
    }
    size_t const last = works.size() - 1;
    bool met = true;
    line += verdict(rounds.ratio(last, 0) * growth.sizes[0].size / growth.sizes[last].size,
                    "the first, per unit", growth.goal, met);
    report(state, line, met);
}

class OneLineEach : public benchmark::BenchmarkReporter {
  public:
    explicit OneLineEach(FILE* report) : report_(report) {}

    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            std::string const name = run.run_name.function_name;
            fprintf(report_, "%-42s %s\n", name.c_str(), run.report_label.c_str());
            fflush(report_);
            ++count_;
            missed_ += run.counters.at("met") < 0.5 ? 1 : 0;
        }
    }
    void Finalize() override {
        fprintf(report_, "%d workloads, %d miss their goal\n", count_, missed_);
    }

  private:
    FILE* const report_;
    int count_ = 0;
    int missed_ = 0;
};

}  // namespace

void add(Comparison const& comparison) {
    comparisons().push_back(comparison);
    benchmark::RegisterBenchmark(
        comparison.name.c_str(),
        [comparison](benchmark::State& state) { compare(state, comparison); })
        ->Iterations(ROUNDS)
        ->UseManualTime();
}

void add(Growth const& growth) {
    benchmark::RegisterBenchmark(growth.name.c_str(),
                                 [growth](benchmark::State& state) { grow(state, growth); })
        ->Iterations(ROUNDS)
        ->UseManualTime();
}

void countInstructions(std::string const& pattern) {
    int const count = 1000;
    for (Comparison const& comparison : comparisons()) {
        std::vector<Variant> variants = {{"product", comparison.product},
                                         {"limit", comparison.limit}};
        variants.insert(variants.end(), comparison.peers.begin(), comparison.peers.end());
        for (Variant const& variant : variants) {
            if (comparison.name.find(pattern) != std::string::npos && variant.work) {
                variant.work(1);
                std::string const name = comparison.name + "|" + variant.name;
                CALLGRIND_ZERO_STATS;
                variant.work(count);
                CALLGRIND_DUMP_STATS_AT(name.c_str());
            }
        }
    }
}

void timeWorkloads(std::string const& pattern, FILE* report) {
    OneLineEach reporter(report);
    benchmark::RunSpecifiedBenchmarks(&reporter, pattern);
}
