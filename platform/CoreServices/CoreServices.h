// What a metadata importer needs of CoreServices, under the framework's own names.
#pragma once

#include <CoreServices/MDImporter.h>
#include <CoreServices/MDItem.h>
