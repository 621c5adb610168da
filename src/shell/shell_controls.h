// The numbers of the main window's controls that the round does not address, and of its menu.
#pragma once

enum ShellControl : int {
    CONTROL_TOKEN_BOX = 1005,
    CONTROL_BOARD = 1009,
    CONTROL_TOKEN_LABEL = 1017,
    CONTROL_ORIGIN_LABEL = 1018,
    CONTROL_AMOUNT_LABEL = 1019,
    CONTROL_CLOSE = 1020,
    CONTROL_VERSION = 1025,
};

enum BoardCommand : int {
    COMMAND_EXCLUDE = 1301,
    COMMAND_INCLUDE = 1302,
    COMMAND_COPY_ROW = 1303,
    COMMAND_NOTE = 1305,
};
