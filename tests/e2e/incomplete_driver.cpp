// A library that has every function of a driver but intf_addConditionRead. None of them is ever called: a program that
// loads it has to notice first.

extern "C" {
void intf_getProtocolType() {}
void intf_getDriverParameter() {}
void intf_getDriverPropertyPage() {}
void intf_SetDriverPropertyPage() {}
void intf_setAddrValueChangeCallBack() {}
void intf_initProperty() {}
void intf_checkAddrValidity() {}
void intf_checkAddr() {}
void intf_getRegListByType() {}
void intf_getRegDiscription() {}
void intf_multiCopy() {}
void intf_addrMerge() {}
void intf_setRcpAddress() {}
void intf_getSendFrame() {}
void intf_dealRcvFrame() {}
void intf_getData() {}
void intf_setData() {}
}
