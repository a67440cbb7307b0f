#include "ztbase/exceptions.h"

// Defined here so that each class has one type identity across all libraries.
ZTException::~ZTException() = default;
RGException::~RGException() = default;
ReportException::~ReportException() = default;
