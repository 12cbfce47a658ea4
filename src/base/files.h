// Files and folders through the C library and POSIX: a static quarnel that used the standard
// filesystem and stream libraries would carry their locale machinery, twice the size of the rest.
#pragma once

#include <string>
#include <vector>

namespace quarnel {

// Whether the file opens for reading.
bool CanRead(const std::string& path);
// stat follows links: a link to a folder is a folder.
bool IsDirectory(const std::string& path);
bool Exists(const std::string& path);

// The name after the last '/' ("" for a name ending in '/'), and the folder before it ("" for a
// bare name, "/" for a name in the root).
std::string BaseName(const std::string& path);
std::string FolderOf(const std::string& path);
// `name` in `folder`: a '/' between them where the folder does not end with one.
std::string InFolder(const std::string& folder, const std::string& name);

struct FolderEntry {
  std::string path;  // the folder's path joined with the entry's name
  bool folder;       // a folder, not reached through a link (links to folders are not followed)
  bool file;         // a regular file, or a link to one
};
// The entries of a folder in the order the system lists them; false, with errno set, when it
// cannot be listed.
bool ListFolder(const std::string& folder, std::vector<FolderEntry>& entries);

// Makes the folder and the folders above it that are missing; false, with errno set, when it
// cannot, or when the name is taken by something that is not a folder (ENOTDIR).
bool MakeFolders(const std::string& folder);

// Removes the file, or the folder with all it holds (links are removed, not followed); errors
// are ignored.
void RemoveTree(const std::string& path);

// The whole file; false, with errno set, when it cannot be read.
bool ReadWholeFile(const std::string& path, std::string& bytes);

// The target of a symbolic link; empty when it cannot be read.
std::string LinkTarget(const std::string& path);

}  // namespace quarnel
