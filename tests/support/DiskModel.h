// The disks that a loss of power may leave after some operations on files.
//
// A disk may lack each change of a name whose folder has not been synced since, whatever else it
// has, and what has been written to a file since its sync, or the half of the new content that comes
// first. Of a rename to another folder, the new name may be there without the old one being gone.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

typedef std::map<std::string, std::string> Disk;  // names of files, and their content

// The files as the processes see them, and what of them lasts. "" is the name of no file.
struct DiskModel {
    struct File {
        std::string content;
        std::string synced;
    };
    struct Move {
        std::string from, to;
        size_t file;
    };
    typedef std::map<std::string, size_t> Names;

    explicit DiskModel(Disk const& disk) {
        for (auto const& [name, content] : disk) {
            lasting[name] = now[name] = files.size();
            files.push_back({content, content});
        }
    }

    static std::string folderOf(std::filesystem::path const& name) { return name.parent_path(); }

    void move(std::string const& from, std::string const& to) {
        size_t const file = from.empty() ? files.size() : now[from];
        files.resize(std::max(files.size(), file + 1));
        now.erase(from);
        now[to] = file;
        pending.push_back({from, to, file});
    }

    // Once a folder has lost a name for good, its file has the new one.
    void sync(std::string const& name) {
        if (now.contains(name)) {
            files[now[name]].synced = files[now[name]].content;
            return;
        }
        for (Move& move : pending) {
            bool const losesHere = folderOf(move.from) == name;
            if (losesHere || folderOf(move.to) == name) {
                lasting[std::exchange(move.to, "")] = move.file;
            }
            if (losesHere) {
                lasting.erase(std::exchange(move.from, ""));
            }
        }
    }

    std::set<Disk> disks() const {
        std::set<Names> all = {lasting};
        for (Move const& move : pending) {
            for (Names names : std::set<Names>(all)) {
                names[move.to] = move.file;
                if (folderOf(move.from) != folderOf(move.to)) {
                    all.insert(names);
                }
                names.erase(move.from);
                all.insert(names);
            }
        }
        std::set<Disk> result;
        for (Names const& names : all) {
            std::set<Disk> some = {{}};
            for (auto const& [name, file] : names) {
                some = name.empty() ? some : with(some, name, files[file]);
            }
            result.merge(some);
        }
        return result;
    }

    static std::set<Disk> with(std::set<Disk> const& disks, std::string const& name,
                               File const& file) {
        std::set<Disk> more;
        for (Disk disk : disks) {
            size_t const half = std::min(file.content.size() / 2, file.synced.size());
            for (std::string const& content :
                 {file.synced, file.content,
                  file.content.substr(0, file.content.size() / 2) + file.synced.substr(half)}) {
                disk[name] = content;
                more.insert(disk);
            }
        }
        return more;
    }

    std::vector<File> files;
    Names now, lasting;
    std::vector<Move> pending;
};
