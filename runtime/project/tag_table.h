#ifndef RUNTIME_PROJECT_TAG_TABLE_H
#define RUNTIME_PROJECT_TAG_TABLE_H

#include "documents/document.h"
#include "values/tags.h"

#include <set>

// Tags as a project file or a CSV file lists them. A tag has
//
//   type        register type of the driver, such as "DM" or "CIO_bit"; needed, but not with an address that has its area
//   address     in the driver's notation, such as 100 or "0.5", or with its area as the PLC's manuals write it, such as
//               "D100" or "W3.05"; needed
//   count       number of values; of a string the words; 1 by default
//   data        data type, such as "f32" or "REAL"; 16-bit words without one
//   word_order  "low" or "high": which word of a number of several words comes first
//   char_order  "low" or "high": which byte of a word of text comes first
//   scale, offset, decimals, unit, comment, screen
//   group       name of those that are read and watched together
//   min, max    of a number as it is shown; a write outside is refused
//   deadband    of a number as it is shown; a log of changes passes over smaller ones
//   access      "r" for a tag that is never written, "rw" for one that others may write, too, through a program that passes
//               their orders on; without it the tag is written by those alone who run this program
//
// and in a CSV file a name.

/// Adds the tags of the table, whose keys are the names, to `book`. Returns the names of those with a problem.
std::set<std::string> addTags(const DataNode &table, const std::string &file, TagBook &book,
                              Problems &problems);

/// The same for the rows of a CSV file.
std::set<std::string> addTagRows(const DataNode &rows, const std::string &file, TagBook &book,
                                 Problems &problems);

/// The tag as a line of a table [tags] in TOML.
std::string tagLine(const Tag &tag);

#endif
