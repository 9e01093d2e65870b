#pragma once

#include "mail/MailMessage.h"
#include "support/Clock.h"
