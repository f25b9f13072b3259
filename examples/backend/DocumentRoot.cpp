// Finds regular files below the document root.
#include "DocumentRoot.h"

#include <BEConfig.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "Limits.h"

namespace fs = std::filesystem;

namespace {

std::map<std::string, char const*> const TYPES = {
    {".css", "text/css; charset=utf-8"},
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".png", "image/png"},
    {".svg", "image/svg+xml"},
    {".txt", "text/plain; charset=utf-8"},
};

bool isHidden(fs::path const& part) { return part.native().front() == '.'; }

}  // namespace

Reply readPage(Request const& request) {
    std::error_code error;
    fs::path const root = fs::canonical(BEConfig::WEBSERVER_DOCROOT, error);
    std::string const name = request.path == "/" ? "/index.html" : request.path;
    fs::path const file = error ? "" : fs::canonical(root.native() + name, error);
    auto const [rootEnd, rest] = std::mismatch(root.begin(), root.end(), file.begin(), file.end());
    if (error || rootEnd != root.end() || std::any_of(rest, file.end(), isHidden) ||
        !fs::is_regular_file(file, error) || fs::file_size(file, error) > MAX_FILE) {
        throw refuse(404, "no such page");
    }
    std::ifstream content(file, std::ios::binary);
    auto const type = TYPES.find(file.extension());
    return {.body = {std::istreambuf_iterator<char>(content), std::istreambuf_iterator<char>()},
            .type = type != TYPES.end() ? type->second : "application/octet-stream"};
}
