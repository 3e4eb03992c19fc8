[SourcePaths]
SP1=/data/src
SP2=<various>

[ISD]
SP1=1

[SP2FGs]
FG1=*.*
[SP1FGs]
FG1=*.txt
[SP2FG1DPs]
DP1=/backup/misc
[SP1FG1DPs]
DP1=/backup/text
DP2=/mirror/text
