// The unwinder of a compiler for glibc asks the C library for the unwind tables of an address. musl can only list all
// loaded objects, among which this finds the one with the address.
#define _GNU_SOURCE
#include <link.h>
#include <stddef.h>

struct found {  // as in glibc's <dlfcn.h>; the unwinder reads nothing but the tables
    unsigned long long flags;
    void *start, *end;
    struct link_map* map;
    void* tables;
    unsigned long long reserved[7];
};

struct search {
    ElfW(Addr) address;
    struct found* found;
};

static int visit(struct dl_phdr_info* object, size_t size, void* data) {
    struct search* search = data;
    ElfW(Addr) tables = 0;
    int is_here = 0;
    (void)size;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        ElfW(Phdr) const* part = &object->dlpi_phdr[i];
        ElfW(Addr) start = object->dlpi_addr + part->p_vaddr;
        is_here |= part->p_type == PT_LOAD && search->address - start < part->p_memsz;
        tables = part->p_type == PT_GNU_EH_FRAME ? start : tables;
    }
    search->found->tables = (void*)tables;
    return is_here && tables != 0;
}

__attribute__((visibility("hidden"))) int _dl_find_object(void* address, struct found* found) {
    struct search search = {(ElfW(Addr))address, found};
    return dl_iterate_phdr(visit, &search) ? 0 : -1;
}
