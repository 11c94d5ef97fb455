#pragma once

// The reasons of failed operations, as Windows numbers them, on every system: those that LastError() and the registry
// give.

#include "utility/platform/Types.h"

#ifndef _WIN32

inline constexpr DWORD ERROR_SUCCESS = 0;                       ///< none: it went well
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;              ///< the device or file has no such operation
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;                ///< no such file, key or value
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;                ///< a folder on the way is not there
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;           ///< the process or the system can open no more
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;                 ///< it is not allowed
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;                ///< the handle is of nothing that is open
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;             ///< there is no memory for it
inline constexpr DWORD ERROR_INVALID_ACCESS = 12;               ///< it is not open for that
inline constexpr DWORD ERROR_INVALID_DRIVE = 15;                ///< no such drive
inline constexpr DWORD ERROR_CURRENT_DIRECTORY = 16;            ///< a current folder cannot be removed
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;              ///< a file cannot be moved to another device so
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;                ///< a folder has no more of them
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;                ///< the medium cannot be written to
inline constexpr DWORD ERROR_SEEK = 25;                         ///< the device has no such place
inline constexpr DWORD ERROR_WRITE_FAULT = 29;                  ///< the device did not take the data
inline constexpr DWORD ERROR_READ_FAULT = 30;                   ///< the device did not give the data
inline constexpr DWORD ERROR_GEN_FAILURE = 31;                  ///< the device does not work
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;            ///< somebody else has it open
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;               ///< somebody else has locked it
inline constexpr DWORD ERROR_HANDLE_EOF = 38;                   ///< there is nothing behind the end
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;             ///< the disk is full
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;                ///< it cannot be done here
inline constexpr DWORD ERROR_FILE_EXISTS = 80;                  ///< there is such a file already
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;            ///< an argument is not valid
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;                 ///< nobody is at the other end
inline constexpr DWORD ERROR_DISK_FULL = 112;                   ///< the disk is full
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;         ///< the caller has given too little room
inline constexpr DWORD ERROR_INVALID_NAME = 123;                ///< the name is none
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;               ///< no such library
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;               ///< a place ahead of the start
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;               ///< the folder is not empty
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;                ///< the path is none
inline constexpr DWORD ERROR_BUSY = 170;                        ///< somebody else is using it
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;              ///< there is one already
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;              ///< the file is no program or library for this machine
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;        ///< the name is too long
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;              ///< the file is larger than allowed
inline constexpr DWORD ERROR_MORE_DATA = 234;                   ///< there is more than the caller has room for
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;               ///< there is nothing more to enumerate
inline constexpr DWORD ERROR_DIRECTORY = 267;                   ///< the name is no folder's
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;             ///< the address is none of the process
inline constexpr DWORD ERROR_NOACCESS = 998;                    ///< the memory cannot be accessed
inline constexpr DWORD ERROR_BADDB = 1009;                      ///< the store of the settings is damaged
inline constexpr DWORD ERROR_REGISTRY_IO_FAILED = 1016;         ///< the store of the settings cannot be read or written
inline constexpr DWORD ERROR_KEY_DELETED = 1018;                ///< the key was deleted meanwhile
inline constexpr DWORD ERROR_UNABLE_TO_REMOVE_REPLACED = 1175;  ///< the old file cannot be replaced
inline constexpr DWORD ERROR_UNABLE_TO_MOVE_REPLACEMENT = 1176; ///< the new file cannot be renamed
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;    ///< the module has no such resource
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;      ///< links lead in a circle

#endif
