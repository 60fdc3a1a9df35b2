#ifndef TESTS_E2E_PANEL_FILES_H
#define TESTS_E2E_PANEL_FILES_H

#include "panel_run.h"
#include "support/temporary_folder.h"

// Files for a run of the panel.
using PanelFiles = TemporaryFolder;

#endif
