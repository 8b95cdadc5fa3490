// kwxloader: the one header a host program includes. It brings the loader (kwxLoader), the
// study it moves (Company, with its groups and series), Comparison, PERTReport, and
// CreateDatabase, which makes a new study database file and answers a Status (ok(), message()).
//
//   kwx::Status made = kwx::CreateDatabase("studies.db");
//   kwx::kwxLoader loader;
//   loader.Access_blnOpenDatabase("studies.db");
//
// Link the target kwx::loader (find_package(kwxloader)).
#ifndef KWXLOADER_KWXLOADER_H_
#define KWXLOADER_KWXLOADER_H_

#include "loader/kwx_loader.h"
#include "model/company.h"
#include "model/comparison.h"
#include "model/pert_report.h"
#include "services/create_database.h"
#include "services/status.h"

#endif  // KWXLOADER_KWXLOADER_H_
