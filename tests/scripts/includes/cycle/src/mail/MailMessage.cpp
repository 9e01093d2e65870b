#include "mail/MailMessage.h"

#include <string>

#include "content/ZipSearcher.h"
