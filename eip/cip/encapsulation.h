#ifndef EIP_CIP_ENCAPSULATION_H
#define EIP_CIP_ENCAPSULATION_H

// The encapsulation layer: header, common packet format, session.

#include "eip/cip/common_packet.h"
#include "eip/cip/encap_header.h"
#include "eip/cip/session.h"

#endif
