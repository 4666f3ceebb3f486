#pragma once

// Numbers of the window and its controls, for the code and for the resource file.

#define DM_SETUP_WINDOW 100
#define DM_SETUP_TITLE 101
#define DM_SETUP_FOLDER 102
#define DM_SETUP_BROWSE 103
#define DM_SETUP_OUTPUT 104
