// What is refused before anything is counted, read or changed: requests for other hosts and of foreign pages,
// methods that a path does not have, bodies that are not JSON.
#ifndef BACKEND_HTTP_ADMISSION_H
#define BACKEND_HTTP_ADMISSION_H

#include <string>
#include <vector>

#include "Routes.h"

// Throws the reply to a request that is not let in, and to OPTIONS. The host may be one of the names, "localhost" or
// any IP address.
void admit(Request const& request, bool hasBody, std::vector<std::string> const& names);

#endif
