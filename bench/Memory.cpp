// What loading the nine databases of the working directory's gateway costs: "memory library" through
// the library, "memory json-c" with json-c alone.
#include <malloc.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "BEConfig.h"
#include "JsonData.h"
#include "LocalDbCtrl.h"

namespace {

long residentKilobytes() {
    long size = 0;
    long resident = 0;
    FILE* const file = fopen("/proc/self/statm", "r");
    if (file == nullptr || fscanf(file, "%ld %ld", &size, &resident) != 2) {
        return -1;
    }
    fclose(file);
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

bool load(unsigned int type, bool throughLibrary) {
    if (!throughLibrary) {
        return json_object_from_file(LocalDbCtrl::getFileName(type)) != nullptr;
    }
    return LocalDbCtrl::lockDbObject(type, "", "default") != nullptr &&
           LocalDbCtrl::unlockDbObject(type, "default") == 0;
}

}  // namespace

int main(int count, char** words) {
    bool const throughLibrary = count > 1 && strcmp(words[1], "library") == 0;
    LocalDbCtrl::init();
    size_t const before = mallinfo2().uordblks;
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        if (!load(type, throughLibrary)) {
            fprintf(stderr, "cannot load %s\n", LocalDbCtrl::getFileName(type));
            return 1;
        }
    }
    printf("%zu bytes of heap, %ld KB resident\n", mallinfo2().uordblks - before,
           residentKilobytes());
    return 0;
}
