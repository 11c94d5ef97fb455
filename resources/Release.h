// The release of the application that the library belongs to. For the compiler and the resource compiler alike.
#ifndef UTILITY_RELEASE_H
#define UTILITY_RELEASE_H

#define UTILITY_RELEASE_MAJOR 2022
#define UTILITY_RELEASE_MINOR 0
#define UTILITY_RELEASE_BUILD 2114
#define UTILITY_RELEASE_TAG "RC"

#endif
