; remark
[Playlist]
file0=a
file2147483648=b
FILE-1 = c
