#define DROP(x)
#define Jan DROP(
#define Feb DROP(
#define Mar DROP(
#define Apr DROP(
#define May DROP(
#define Jun DROP(
#define Jul DROP(
#define Aug DROP(
#define Sep DROP(
#define Oct DROP(
#define Nov DROP(
#define Dec DROP(
[__DATE__)]
