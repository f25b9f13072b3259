// What is refused before anything is counted, read or changed: requests for other hosts and of foreign pages,
// methods that a path does not have, bodies that are not JSON.
#ifndef BACKEND_HTTP_ADMISSION_H
#define BACKEND_HTTP_ADMISSION_H

#include <string>
#include <vector>

#include "Routes.h"

class Admission {
  public:
    // The names by which the back end may be asked, beside "localhost" and any IP address; whether with HTTPS.
    Admission(std::vector<std::string> names, bool isEncrypted);

    // Throws the reply to a request that is not let in, and to OPTIONS.
    void check(Request const& request, bool hasBody) const;

  private:
    bool isOurs(std::string const& authority) const;
    bool isForeign(Request const& request) const;

    std::vector<std::string> const names_;
    std::string const scheme_;
};

#endif
