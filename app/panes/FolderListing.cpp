#include "panes/FolderListing.h"

namespace orbisk {

FolderListing::FolderListing(std::vector<FileItem> read) : items(std::move(read)), ranks(items), forms(items) {}

} // namespace orbisk
