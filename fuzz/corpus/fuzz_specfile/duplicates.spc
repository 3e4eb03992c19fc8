[SourcePaths]
SP1=/a
SP1=/ignored
sp2=/A
[ISD]
SP1=yes
