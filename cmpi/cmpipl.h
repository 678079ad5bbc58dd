// The platform that these declarations of CMPI are made for. Unlike a system's own headers they ask for no
// CMPI_PLATFORM_ symbol: there is one platform, any GNU system.
#ifndef ZELSENSORS_CMPI_CMPIPL_H
#define ZELSENSORS_CMPI_CMPIPL_H

#if !defined(__GNUC__) || defined(_WIN32)
#error "These CMPI declarations are for GCC and Clang on GNU systems"
#endif

#endif  // ZELSENSORS_CMPI_CMPIPL_H
