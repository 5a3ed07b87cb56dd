#pragma once

/// Every command with its members, one line each, for the person at the terminal.
extern const char* const command_list;
