/* libtr104: the voice data-model adapter.  Include this for every exported name. */
#ifndef TR104_H
#define TR104_H

#include "tr104/channel.h"
#include "tr104/framework.h"
#include "tr104/notify.h"
#include "tr104/common.h"
#include "tr104/codec.h"
#include "tr104/protocol.h"
#include "tr104/handlers.h"
#include "tr104/startup.h"
#include "tr104/sip.h"
#include "tr104/sip_servers.h"
#include "tr104/sip_identity.h"
#include "tr104/h248.h"
#include "tr104/linetest.h"
#include "tr104/netcfg.h"
#include "tr104/statistics.h"
#include "tr104/device.h"

#endif
