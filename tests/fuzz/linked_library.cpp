#include "driver/driver_library.h"

// The panel's table of driver functions, filled with the functions that are linked in, so that they are instrumented,
// too. Stands in for the panel's own, which loads the library by its file name.

DriverLibrary::DriverLibrary(const std::string &file)
    : file_(file), copy_(-1),
      getProtocolType(&intf_getProtocolType), getDriverParameter(&intf_getDriverParameter),
      getDriverPropertyPage(&intf_getDriverPropertyPage), setDriverPropertyPage(&intf_SetDriverPropertyPage),
      setAddrValueChangeCallBack(&intf_setAddrValueChangeCallBack), initProperty(&intf_initProperty),
      checkAddrValidity(&intf_checkAddrValidity), checkAddr(&intf_checkAddr),
      getRegListByType(&intf_getRegListByType), getRegDiscription(&intf_getRegDiscription),
      multiCopy(&intf_multiCopy), addrMerge(&intf_addrMerge), setRcpAddress(&intf_setRcpAddress),
      getSendFrame(&intf_getSendFrame), dealRcvFrame(&intf_dealRcvFrame), getData(&intf_getData),
      setData(&intf_setData), addConditionRead(&intf_addConditionRead)
{
}

void DriverLibrary::Unload::operator()(void *) const {}
