// Workloads: the same work done in several ways, timed side by side.
//
// On a shared machine the speed changes from one moment to the next. So all variants of a workload
// run back to back within a round, forwards and backwards in turn, and a ratio is the median of the
// ratios of the rounds.
#pragma once

#include <stdio.h>

#include <functional>
#include <string>
#include <vector>

// Does the work `count` times.
typedef std::function<void(int count)> Work;

struct Variant {
    char const* name;
    Work work;
};

struct Comparison {
    std::string name;
    Work product;
    Work limit;  // the same work by hand, for this one case; none when empty
    std::vector<Variant> peers;
    double goalOfLimit;  // at most so many times the limit, or the best peer; 0 for no goal
    double goalOfPeer;
    double goalInNanoseconds = 0.0;
};

// The product alone, at several sizes: the cost of one unit of size must not grow.
struct Growth {
    struct Size {
        double size;  // 1 at every size where the cost is to stay flat
        Work work;
    };
    std::string name;
    std::vector<Size> sizes;
    double goal;  // cost of a unit at the last size: at most so many times that at the first one
};

void add(Comparison const& comparison);
void add(Growth const& growth);

// Runs the comparisons whose name holds `pattern` a thousand times per variant, each for a dump of
// its own by callgrind.
void countInstructions(std::string const& pattern);

// Times the workloads that match `pattern`, a regular expression, and prints one line for each.
void timeWorkloads(std::string const& pattern, FILE* report);

// Each file of workloads registers its own.
void addLookups();
void addAssignments();
void addHandles();
void addLogLines();
void addFiles();
void addSnapshots();     // after the files, which start the databases
void addTransactions();  // likewise
void addChanges();       // likewise
void addGrowths();
