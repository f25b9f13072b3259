// The files below the document root, and no others.
#ifndef BACKEND_DOCUMENTROOT_H
#define BACKEND_DOCUMENTROOT_H

#include <filesystem>
#include <string>

#include "Reply.h"

class DocumentRoot {
  public:
    // Follows links once, now. A folder that is missing has no files.
    explicit DocumentRoot(std::string const& folder);

    // The file that the (decoded) URL path names, index.html for "/"; 404 for everything that is no
    // regular file below the folder, whatever dots and links lead there, and for hidden files.
    Reply get(std::string const& urlPath) const;

  private:
    std::filesystem::path root_;
};

#endif
