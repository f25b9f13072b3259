// Reading, changing and saving a file; the database cycle.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "BEConfig.h"
#include "ByHand.h"
#include "Gateway.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"
#include "Scratch.h"
#include "TreeMapObject.h"
#include "Workload.h"

namespace {

namespace fs = std::filesystem;

class ScratchFolder {
  public:
    explicit ScratchFolder(fs::path const& wanted) {
        path_ = (fs::is_directory(wanted) ? wanted : fs::temp_directory_path()) / "bench-XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            abort();
        }
    }
    ~ScratchFolder() { fs::remove_all(path_); }
    std::string const& path() const { return path_; }

  private:
    std::string path_;
};

void addSave(int bytes, double goal) {
    std::string const size = std::to_string(bytes >> 10) + "KB";
    std::string const file = scratchFile("product" + size);
    std::string const other = scratchFile("limit" + size);
    for (std::string const& name : {file, other}) {
        std::ofstream(name) << gatewayText(bytes);
    }
    Work const product = [file](int count) {
        for (int i = 0; i < count; ++i) {
            TreeMapObject* const document = JsonData::createObjectFromFile(file.c_str());
            document->set("wan.[1].mtu", document->get<int>("wan.[1].mtu") + 1);
            JsonData::saveObjectToFile(file.c_str(), document);
            delete document;
        }
    };
    Work const limit = [other](int count) {
        for (int i = 0; i < count; ++i) {
            json_object* const document = json_object_from_file(other.c_str());
            json_object* const wan = byHand(document, "wan", 1);
            json_object_object_add(
                wan, "mtu", json_object_new_int(json_object_get_int(byHand(wan, "mtu")) + 1));
            json_object_to_file_ext(other.c_str(), document, JSON_C_TO_STRING_PRETTY);
            json_object_put(document);
        }
    };
    add({"save/read, change, save " + size, product, limit, {}, goal, 0.0});
}

void startDatabase() {
    BEConfig::DATA_LOCATION = fs::path(scratchFile("data"));
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        fs::create_directories(fs::path(LocalDbCtrl::getFileName(type)).parent_path());
    }
    LocalDbCtrl::init();
}

// A type whose document has `bytes` bytes: locked, changed and saved.
Work databaseCycle(API_TYPE_T type, int bytes) {
    std::ofstream(LocalDbCtrl::getFileName(type)) << gatewayText(bytes);
    return [type](int count) {
        for (int i = 0; i < count; ++i) {
            TreeMapObject* const document = LocalDbCtrl::lockDbObject(type, "", "default");
            document->set("wan.[1].mtu", document->get<int>("wan.[1].mtu") + 1);
            LocalDbCtrl::saveDbObject(type, "default");
        }
    };
}

}  // namespace

std::string scratchFile(std::string const& name) {
    static ScratchFolder const folder("/dev/shm");
    return folder.path() + "/" + name;
}

std::string diskFile(std::string const& name) {
    static ScratchFolder const folder("/var/tmp");
    return folder.path() + "/" + name;
}

void addFiles() {
    addSave(2 << 10, 1.5);
    addSave(50 << 10, 1.15);
    addSave(1 << 20, 1.15);
    startDatabase();
    add(Growth{"growth/database cycle, 16 to 1024 KB",
               {{16, databaseCycle(API_MEDIASHARE, 16 << 10)},
                {128, databaseCycle(API_MISC, 128 << 10)},
                {1024, databaseCycle(API_FAC, 1 << 20)}},
               1.5});
}
