// A library that the framework cannot use.
#ifdef OPEN_SYMBOL
void nobodyHasThis();
#endif

extern "C" __attribute__((visibility("default"))) void* createCommunicationsServiceProxy();

void* createCommunicationsServiceProxy()
{
#ifdef OPEN_SYMBOL
    nobodyHasThis();
#endif
    return nullptr;
}
