// The screen of a round: the main window's controls behind the functions that the controller asks for.
#pragma once

#include "shell/shell.h"

RoundWindow round_screen(Shell& shell);
