#pragma once

// Process-wide heap allocation count, switched on around a measured section.
void setAllocationCounting(bool on);
long long allocationCount();
