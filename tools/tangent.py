from mpmath import mp, mpf, tan, cos, sin, pi, matrix, lu_solve, qr_solve, sqrt
mp.prec=300
def fit(np_, nq, edge, iters=12):
    n=np_+nq; M=6*n+40
    ys=[edge**2*(1-cos(pi*(mpf(i)+mpf(1)/2)/M))/2 for i in range(M)]
    w=[mpf(1)]*M; lw=[mpf(1)]*M
    co=None
    for it in range(iters):
        A=matrix(M,n); b=matrix(M,1)
        for i,y in enumerate(ys):
            r=sqrt(y); f=tan(r)/r  # P/Q=f ; (P - f Q)=0 -> 1+sum p y^j - f - f sum q y^j
            den=f*( (1+sum(co[np_+j]*y**(j+1) for j in range(nq))) if co else 1)
            s=lw[i]/den
            for j in range(np_): A[i,j]=y**(j+1)*s
            for j in range(nq): A[i,np_+j]=-f*y**(j+1)*s
            b[i]=(f-1)*s
        x,res=qr_solve(A,b)
        co=[x[i] for i in range(n)]
        errs=[]
        for y in ys:
            r=sqrt(y); P=1+sum(co[j]*y**(j+1) for j in range(np_)); Q=1+sum(co[np_+j]*y**(j+1) for j in range(nq))
            errs.append(abs(r*P/Q/tan(r)-1))
        m=max(errs)
        lw=[sqrt(l*l*(e/m+mpf(1)/1000)) for l,e in zip(lw,errs)]
        t=max(lw); lw=[l/t for l in lw]
    return co,m
def fitdbl(np_,nq,edge):
    co,m=fit(np_,nq,edge)
    return co,m
import struct
def bits(x): return "0x%016X"%struct.unpack("<Q",struct.pack("<d",float(x)))[0]
def fbits(x): return "0x%08X"%struct.unpack("<I",struct.pack("<f",float(x)))[0]
for a,b in ((0,1),(1,1),(0,2),(1,2),(2,2),(1,3),(2,3),(3,3)):
    co,m=fit(a,b,pi/4*(1+mpf(2)**-20))
    print(a,b,"2^%.2f"%float(mp.log(m,2)), "P",[bits(c) for c in co[:a]],"Q",[bits(c) for c in co[a:]], [fbits(c) for c in co] if a+b<=3 else "")
