// The broker's function tables, each filled by the source file that holds its functions. Thread-safe.
#ifndef ZELSENSORS_BROKER_TABLES_H
#define ZELSENSORS_BROKER_TABLES_H

#include "broker/Broker.h"

namespace broker {

// Each fills a table as the options say.
void fillBrokerTable(CMPIBrokerFT& table, const BrokerOptions& options);
void fillEncapsulationTable(CMPIBrokerEncFT& table, const BrokerOptions& options);
void fillThreadTable(CMPIBrokerExtFT& table, const BrokerOptions& options);
void fillTable(CMPIStringFT& table, const BrokerOptions& options);
void fillTable(CMPIObjectPathFT& table, const BrokerOptions& options);
void fillTable(CMPIInstanceFT& table, const BrokerOptions& options);
void fillTable(CMPIArrayFT& table, const BrokerOptions& options);
void fillTable(CMPIDateTimeFT& table, const BrokerOptions& options);
void fillTable(CMPIContextFT& table, const BrokerOptions& options);
void fillTable(CMPIArgsFT& table, const BrokerOptions& options);
void fillTable(CMPIResultFT& table, const BrokerOptions& options);

}  // namespace broker

#endif
