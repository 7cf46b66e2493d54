#include "sipobject/headers/KxSipSubjectHeader.h"

constinit const KxConstString KxSipSubjectHeader::sToken{"Subject"};
constinit const KxConstString KxSipSubjectHeader::sCompactToken{"s"};

static const KxSipSubjectHeader::Registration s_registration;
