// What is refused before anything is counted, read or changed: by whom a page was sent, by method and type.
#ifndef BACKEND_HTTP_ADMISSION_H
#define BACKEND_HTTP_ADMISSION_H

#include <optional>
#include <string>
#include <vector>

#include "Routes.h"

class Admission {
  public:
    // Under which names the back end may be asked, beside "localhost" and any IP address, and whether
    // as https.
    Admission(std::vector<std::string> names, bool isEncrypted);

    // The reply to a request that is not let in, and to OPTIONS.
    std::optional<Reply> answer(Request const& request, bool hasBody) const;

  private:
    bool isOurs(std::string const& authority) const;
    bool isForeign(Request const& request) const;

    std::vector<std::string> const names_;
    std::string const scheme_;
};

#endif
