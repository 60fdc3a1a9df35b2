#ifndef SCREENS_GRID_CHECK_H
#define SCREENS_GRID_CHECK_H

#include "screens/screen.h"

/// Reports every element that overlaps one before it. In a group, which is a frame, others lie as a whole. `places` are
/// those in the file of the elements' places in the grid.
void checkGrid(const std::vector<ScreenElement> &elements, const std::vector<Place> &places, const std::string &file,
               Problems &problems);

#endif
