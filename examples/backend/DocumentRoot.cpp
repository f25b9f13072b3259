// Finds regular files below the document root.
#include "DocumentRoot.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "Limits.h"

namespace fs = std::filesystem;

namespace {

char const* contentType(fs::path const& file) {
    static char const* const TYPES[][2] = {{".html", "text/html; charset=utf-8"},
                                           {".js", "text/javascript; charset=utf-8"},
                                           {".css", "text/css; charset=utf-8"},
                                           {".svg", "image/svg+xml"},
                                           {".png", "image/png"},
                                           {".txt", "text/plain; charset=utf-8"}};
    for (auto const& [extension, type] : TYPES) {
        if (file.extension() == extension) {
            return type;
        }
    }
    return "application/octet-stream";
}

fs::path canonicalOrEmpty(std::string const& folder) {
    std::error_code missing;
    return fs::canonical(folder, missing);
}

bool isHidden(fs::path const& part) { return part.native().front() == '.'; }

}  // namespace

DocumentRoot::DocumentRoot(std::string const& folder) : root_(canonicalOrEmpty(folder)) {}

Reply DocumentRoot::get(std::string const& urlPath) const {
    std::string const relative = urlPath == "/" ? "index.html" : urlPath.substr(1);
    if (root_.empty() || relative.empty() || relative.find('\0') != std::string::npos) {
        return refuse(404, "no such page");
    }
    std::error_code error;
    fs::path const file = fs::canonical(root_ / relative, error);
    auto const [rootEnd, rest] =
        std::mismatch(root_.begin(), root_.end(), file.begin(), file.end());
    if (error || rootEnd != root_.end() || std::any_of(rest, file.end(), isHidden) ||
        !fs::is_regular_file(file, error) || fs::file_size(file, error) > MAX_FILE) {
        return refuse(404, "no such page");
    }
    std::ifstream content(file, std::ios::binary);
    Reply reply;
    reply.body.assign(std::istreambuf_iterator<char>(content), std::istreambuf_iterator<char>());
    reply.type = contentType(file);
    return reply;
}
