// Finds regular files below the document root.
#include "DocumentRoot.h"

#include <BEConfig.h>

#include <algorithm>
#include <filesystem>
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

bool isHidden(fs::path const& part) { return part.native().front() == '.'; }

}  // namespace

Reply readPage(std::string const& urlPath) {
    std::error_code error;
    fs::path const root = fs::canonical(BEConfig::WEBSERVER_DOCROOT, error);
    fs::path const file =
        error ? ""
              : fs::canonical(root / (urlPath == "/" ? "index.html" : urlPath.substr(1)), error);
    auto const [rootEnd, rest] = std::mismatch(root.begin(), root.end(), file.begin(), file.end());
    if (error || rootEnd != root.end() || std::any_of(rest, file.end(), isHidden) ||
        !fs::is_regular_file(file, error) || fs::file_size(file, error) > MAX_FILE) {
        throw refuse(404, "no such page");
    }
    std::ifstream content(file, std::ios::binary);
    Reply reply;
    reply.body.assign(std::istreambuf_iterator<char>(content), std::istreambuf_iterator<char>());
    reply.type = contentType(file);
    return reply;
}
