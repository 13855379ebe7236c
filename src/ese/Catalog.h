// The table of all tables.
#pragma once

#include <vector>

#include "ese/PageFile.h"
#include "ese/Schema.h"

namespace postmarker::ese {

// The tables of a database, the catalog itself included, in the order of their object ids. From the
// catalog's copy if the catalog can't be read; empty if neither can. What can't be read of the
// catalog is missing. Templates are found among the tables, which must stay where they are.
std::vector<Table> ReadCatalog(const PageFile& file);

}  // namespace postmarker::ese
