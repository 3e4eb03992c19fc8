[SourcePaths]
SP1=/a
SP3=/after-gap
[sourcepaths]
SP2=/second-section
[SP1FGs]
FG1=  *.c ; *.h  
[SP1FG1DPs]
DP1=/out
DP2=/out
[SP1FG1D