#ifndef TESTS_SUPPORT_DRIVER_FUNCTIONS_H
#define TESTS_SUPPORT_DRIVER_FUNCTIONS_H

#include "omron_fins_ethernet.h"

/// The eighteen functions of the interface, however they were found.
struct DriverFunctions {
    decltype(&intf_getProtocolType)            getProtocolType;
    decltype(&intf_getDriverParameter)         getDriverParameter;
    decltype(&intf_getDriverPropertyPage)      getDriverPropertyPage;
    decltype(&intf_SetDriverPropertyPage)      setDriverPropertyPage;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack;
    decltype(&intf_initProperty)               initProperty;
    decltype(&intf_checkAddrValidity)          checkAddrValidity;
    decltype(&intf_checkAddr)                  checkAddr;
    decltype(&intf_getRegListByType)           getRegListByType;
    decltype(&intf_getRegDiscription)          getRegDiscription;
    decltype(&intf_multiCopy)                  multiCopy;
    decltype(&intf_addrMerge)                  addrMerge;
    decltype(&intf_setRcpAddress)              setRcpAddress;
    decltype(&intf_getSendFrame)               getSendFrame;
    decltype(&intf_dealRcvFrame)               dealRcvFrame;
    decltype(&intf_getData)                    getData;
    decltype(&intf_setData)                    setData;
    decltype(&intf_addConditionRead)           addConditionRead;
};

#endif
