// Visibility and thread types of CMPI.
#ifndef ZELSENSORS_CMPI_CMPIOS_H
#define ZELSENSORS_CMPI_CMPIOS_H

#include <cmpipl.h>

// A function that the broker finds by its name in the provider library. The second is for definitions, and gives C
// linkage too.
#define CMPI_EXPORT __attribute__((visibility("default")))
#define CMPI_IMPORT
#ifdef __cplusplus
#define CMPI_EXTERN_C extern "C" CMPI_EXPORT
#else
#define CMPI_EXTERN_C CMPI_EXPORT
#endif

// Handles of the services in CMPIBrokerExtFT. The key's type differs between brokers: do not depend on it.
#define CMPI_THREAD_TYPE void*
#define CMPI_THREAD_RETURN void*
#define CMPI_MUTEX_TYPE void*
#define CMPI_COND_TYPE void*
#define CMPI_THREAD_KEY_TYPE unsigned int

#endif  // ZELSENSORS_CMPI_CMPIOS_H
