// Program-wide version and build information.
#pragma once

#include <string>

#ifndef DRAPEX_SOURCE_DIR
#define DRAPEX_SOURCE_DIR ""
#endif

inline const int version_major_drapex_ = std::stoi("0");
inline const int version_minor_drapex_ = std::stoi("5");
inline const int version_patch_drapex_ = std::stoi("0");
inline const int current_year_ = std::stoi("2021");

// One copy per source file that includes this header.
static const std::string build_type_ = "Release";
static const std::string drapex_path_ = DRAPEX_SOURCE_DIR;
