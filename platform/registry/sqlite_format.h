// The file of a SQLite store: making a new one, and telling ours from any other file.
#pragma once

#include <string>

#include "sqlite_db.h"

namespace zxreg {

// Opens the store's database at a canonical path, made when there is none. Throws a Failure: FOREIGN for anything that
// is no store of this kind and version (an empty file too: it may be what is left of a store), PERMISSION, CORRUPT,
// BUSY or IO. Nothing is written to a file that is not ours.
Database openStoreDatabase(const std::string& path);

}  // namespace zxreg
