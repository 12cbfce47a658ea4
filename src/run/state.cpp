// Every process-wide variable of a run is defined here, beside the one function that brings
// them all back to the state of a fresh process.
#include "run/state.h"

#include <cstdlib>

#include "confidence/features.h"
#include "confidence/profile.h"
#include "contacts/contacts.h"
#include "output/domains.h"
#include "partition/components.h"
#include "partition/flow.h"
#include "partition/partition.h"
#include "run/parameters.h"
#include "structure/pdb_names.h"
#include "structure/protein.h"

// Run parameters.
int32_t MaxNumDom, MinDomainSize, MaxBetaPair, MaxBetaPass, MaxLoop, MaxTerm, ResSep;
float MinGlobularity, MaxInteraction, MaxTime, MinSegRes, BBWeight;
int32_t NumSamplePoints, NumExtremes, FlagExtremes, Extreme1, Extreme2;
int32_t FlagCa, FlagSS, FlagEva, ReadFlag;
std::string PDBPATH, CHAINPATH;
bool RelaxedRun;

// Input names.
std::string TemplateName, PDBName, PDBBase, Entry;
char ChainName, CHAIN;

// Residue model.
std::vector<Residue> Protein;
int32_t ProteinSize;
std::vector<Atom> AtomPool;

// Contacts.
Contact** ContactMatrix;
int32_t ContactMatrixRows;

// Partition.
int32_t DomainNumber;
std::vector<CutRecord> cut_history;
int32_t Source, Sink;
std::vector<MappingEntry> Mapping;
std::vector<int32_t> InverseMapping;
std::vector<MappingRange> Mapptr;

// Domain records.
std::vector<DomainDetail> domdetail;

// Assessment.
std::vector<ProfileResidue> residue;
int32_t NumOfAA;
std::vector<DomainSegment> Domdata;
int32_t Fragnum, ENDNUM;
double Totalh, Avgh, NormH, Maxd;
int32_t OUTcount;
std::vector<TabRow> Tabdata;
int32_t Totaldnum;

void SetDefaultParameters() {
  FlagExtremes = 2;
  FlagCa = 0;
  FlagSS = 1;
  FlagEva = 1;
  ResSep = 3;
  NumSamplePoints = 20;
  PDBPATH = "./";
  CHAINPATH = "./";
  MaxNumDom = kDefaultMaxNumDom;
  NumExtremes = 30;
  MinDomainSize = 35;
  MinGlobularity = 0.52f;
  MaxInteraction = 0.56f;
  MaxTime = 0.4f;
  MinSegRes = 35.0f;
  MaxBetaPair = 3;
  MaxBetaPass = 2;
  MaxLoop = 12;
  MaxTerm = 12;
  BBWeight = 5.0f;
  ReadFlag = 1;
  Extreme1 = 0;
  Extreme2 = 0;
  RelaxedRun = false;
}

void ResetRunState() {
  SetDefaultParameters();

  TemplateName.clear();
  PDBName.clear();
  PDBBase.clear();
  Entry.clear();
  ChainName = '\0';
  CHAIN = '\0';

  Protein.clear();
  ProteinSize = 0;
  AtomPool.clear();

  if (ContactMatrix != nullptr) {
    for (int32_t i = 0; i < ContactMatrixRows; ++i) std::free(ContactMatrix[i]);
    std::free(ContactMatrix);
  }
  ContactMatrix = nullptr;
  ContactMatrixRows = 0;

  DomainNumber = 0;
  cut_history.clear();
  Source = 0;
  Sink = 0;
  Mapping.clear();
  InverseMapping.clear();
  Mapptr.clear();

  domdetail.clear();

  residue.clear();
  NumOfAA = 0;
  Domdata.clear();
  Fragnum = 0;
  ENDNUM = 0;
  Totalh = Avgh = NormH = Maxd = 0.0;
  OUTcount = 0;
  Tabdata.clear();
  Totaldnum = 0;
}
