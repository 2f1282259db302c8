/// The inspector's page with files inside.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vxsub {

struct EmbeddedFile {
    std::string name;
    std::string bytes;
};

/// The page as it was built, with the files in their order where it has room for them, compressed. Throws `FileError`
/// for what is no such page, which is called `path` then.
std::string pageWith(const std::vector<EmbeddedFile>& files, std::string_view page, const std::string& path);

/// The address of an entry of the file `name` in the page at the path `page`.
std::string linkTo(const std::string& page, const std::string& name, unsigned entry);

}  // namespace vxsub
