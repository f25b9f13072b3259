// Files of the workloads, in memory where the system has such a place: a sync then costs nothing.
#pragma once

#include <string>

// A name in a folder of the process's own, which is removed when the process ends.
std::string scratchFile(std::string const& name);

// The same where a sync takes what it takes on the disk.
std::string diskFile(std::string const& name);
