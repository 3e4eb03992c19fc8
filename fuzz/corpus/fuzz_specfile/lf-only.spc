[SourcePaths]
SP1=/home/user/web
[ISD]
SP1=true
[SP1FGs]
FG1=*.htm;*.html
[SP1FG1DPs]
DP1=/srv/www
