// The tables of the protocol, generated as C from protocols/. The header's declarations give them
// linkage in C++.
#include "wlr-foreign-toplevel-management-client.h"
#include "wlr-foreign-toplevel-management-code.h"
