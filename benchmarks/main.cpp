#include "Bench.h"

int main(int argc, char* argv[])
{
    addEncryptionRows();
    addEndianRows();
    addEndpointHelperRows();
    addFileInfoRows();
    addKeyRows();
    addLiveHashTreeRows();
    addLoggingRows();
    addSafeBase64Rows();
    addStreamCopyRows();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
